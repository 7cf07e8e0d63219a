// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLAN_H
#define GOVCTL_PLAN_H

#include "govctl/desiredstate.h"

#include <QJsonArray>

/// One write.
struct Step
{
    enum class Kind { Policy, Switch };

    Kind kind = Kind::Policy;
    QString key;
    std::optional<bool> before;
    bool value = false;

    QString name() const; ///< for people
    QJsonObject toJson() const;
    static std::optional<Step> fromJson(const QJsonObject &object);
};

QJsonArray toJson(const QVector<Step> &steps);

/// What has to be written so that a device becomes as desired.
struct Plan
{
    QVector<Step> steps; ///< in the order in which they are made
    int kept = 0; ///< what is as desired already
    QVector<Failure> obstacles; ///< because of which nothing should be begun
};

/// What forbids comes before what allows, so that nothing is allowed for a moment that is forbidden
/// both before and after. @p snapshot has all policies.
Plan planFor(const DesiredState &desired, const Snapshot &snapshot);

/// The value of what @p step is about; of a policy the stored one, if this user may know it.
std::optional<bool> valueNow(const Snapshot &snapshot, const Step &step);

/// Writes @p value to what @p step is about.
Outcome writeStep(Daemon &daemon, const Step &step, bool value);

/// What became of a plan.
struct Application
{
    QVector<Step> done; ///< and still so
    QVector<Step> takenBack; ///< in the order in which that was done
    Outcome failure; ///< why it ended early
};

/// Makes @p steps. At the first that fails, what was done is taken back.
Application carryOut(Daemon &daemon, const QVector<Step> &steps);

#endif
