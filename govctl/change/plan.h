// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLAN_H
#define GOVCTL_PLAN_H

#include "desiredstate.h"

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
    bool isOfSame(const Step &other) const { return kind == other.kind && key == other.key; }
    QJsonObject toJson() const;
    static std::optional<Step> fromJson(const QJsonObject &object);
};

QJsonArray toJson(const QVector<Step> &steps);

/// Whether @p steps has one of the same policy or switch.
bool contains(const QVector<Step> &steps, const Step &step);

/// The writes that bring the device to the desired state.
struct Plan
{
    QVector<Step> steps; ///< in the order in which they are made
    QVector<Step> kept; ///< as desired already, so not written
    QStringList notes; ///< side effects on other policies, for people
    QVector<Failure> obstacles; ///< failures known before any write: none is then made
};

/// Writes of "off" come before those of "on", so that nothing that is forbidden both before and
/// after is allowed in between. @p snapshot has all policies.
Plan planFor(const DesiredState &desired, const Snapshot &snapshot);

/// The present value of the policy or switch of @p step; of a policy the stored value, if this user
/// may read it.
std::optional<bool> valueNow(const Snapshot &snapshot, const Step &step);

/// Whether the daemon may have made a write that ended with @p failure, or may still make it.
bool isUncertain(const Outcome &failure);

/// Writes @p value to the policy or switch of @p step.
Outcome writeStep(Daemon &daemon, const Step &step, bool value);

/// The result of making the steps of a plan.
struct Application
{
    QVector<Step> done; ///< made, or without an answer, and not taken back
    QVector<Step> takenBack; ///< in the order of taking back
    Outcome failure; ///< the failure of the step that ended it
};

/// Makes @p steps. When one fails, takes back those that were made, within a time limit of its own;
/// one without an answer counts as made.
Application carryOut(Daemon &daemon, const QVector<Step> &steps);

#endif
