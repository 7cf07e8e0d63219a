// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_HOLDS_H
#define GOVCTL_HOLDS_H

#include "plan.h"

#include <QDateTime>

#include <functional>

/// Changes with a time limit. A file keeps them over restarts of the device.
struct Hold
{
    QString id;
    QDateTime until;
    QVector<Step> steps; ///< in the order in which they are made

    bool isDue() const { return until <= QDateTime::currentDateTimeUtc(); }
    QJsonObject toJson() const;
};

/// The files of all holds, and the one timer that runs at the next end. A policy or switch is in
/// one hold at most: a later change takes it out of the hold that has it.
namespace Holds {

struct Listing
{
    QVector<Hold> holds; ///< the first to end first
    Outcome failure; ///< of a file that is damaged or cannot be read
};

Listing all();

/// Only root can begin and end holds.
Outcome checkRight();

/// Saves a hold of @p seconds for @p steps, which are not yet made, and sets the timer. What
/// another hold has is taken back to the value before that hold. The result has only the steps that
/// change something; without any, there is no hold.
Result<std::optional<Hold>> begin(const QVector<Step> &steps, qint64 seconds);

/// Has @p shorten take steps out of each hold. Saves the holds that became shorter, removes the
/// empty ones, and sets the timer.
Outcome edit(const std::function<void(Hold &)> &shorten);

/// Sets the timer to the next end.
Outcome renewTimer();

/// The result of taking back a hold.
struct Release
{
    QVector<Step> takenBack;
    QVector<Step> left; ///< their value is no longer the hold's
    QVector<Step> failed;
    Outcome failure;
};

/// Takes back the changes of @p hold that still have the hold's value, the last one first.
/// @p daemon is open, @p snapshot has all policies.
Release takeBack(Daemon &daemon, const Snapshot &snapshot, const Hold &hold);

} // namespace Holds

/// The seconds of a duration like "90m", "3h" or "1d12h"; empty when it is no duration, or longer
/// than ten years.
std::optional<qint64> parseDuration(const QString &text);

#endif
