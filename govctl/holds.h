// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_HOLDS_H
#define GOVCTL_HOLDS_H

#include "govctl/plan.h"

#include <QDateTime>

/// Changes with a time limit. A file keeps them over restarts of the device, and a systemd timer
/// ends them.
struct Hold
{
    QString id;
    QDateTime until;
    QVector<Step> steps; ///< in the order in which they are made

    bool isDue() const { return until <= QDateTime::currentDateTimeUtc(); }
    QJsonObject toJson() const;
};

namespace Holds {

/// All holds, the first to end first.
QVector<Hold> all();

/// Saves a hold of @p seconds for @p steps, which are not yet made, and sets its timer.
Result<Hold> begin(const QVector<Step> &steps, qint64 seconds);

/// Sets the timer of @p hold.
Outcome setTimer(const Hold &hold);

/// Removes the file and the timer of @p hold.
void forget(const Hold &hold);

/// Takes back the changes of @p hold that still have the hold's value, the last one first.
/// @p daemon is open, @p snapshot has all policies.
Application takeBack(Daemon &daemon, const Snapshot &snapshot, const Hold &hold);

} // namespace Holds

/// The seconds of a duration like "90m", "3h" or "1d12h"; empty when it is no duration, or longer
/// than ten years.
std::optional<qint64> parseDuration(const QString &text);

#endif
