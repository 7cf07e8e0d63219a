// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_HOLDS_H
#define GOVCTL_HOLDS_H

#include "govctl/plan.h"

#include <QDateTime>

/// Changes that are made for a while. A file keeps them over restarts of the device, and a timer of
/// systemd ends them.
struct Hold
{
    QString id;
    QDateTime until;
    QVector<Step> steps; ///< in the order in which they are made

    bool isDue() const { return until <= QDateTime::currentDateTimeUtc(); }
    QJsonObject toJson() const;
};

namespace Holds {

/// All of them, the first to end first.
QVector<Hold> all();

/// Writes down that @p steps, which are still to be made, hold for @p seconds, and sets the timer.
Result<Hold> begin(const QVector<Step> &steps, qint64 seconds);

/// Sets the timer of @p hold.
Outcome setTimer(const Hold &hold);

/// Forgets @p hold and its timer.
void forget(const Hold &hold);

/// Takes back what @p hold has changed and what still has its value, the last first. @p daemon is
/// open, @p snapshot has all policies.
Application takeBack(Daemon &daemon, const Snapshot &snapshot, const Hold &hold);

} // namespace Holds

/// The seconds that a text like "90m", "3h" or "1d12h" stands for; nothing when it stands for none,
/// or for more than ten years.
std::optional<qint64> parseDuration(const QString &text);

#endif
