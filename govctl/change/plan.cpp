// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "plan.h"

#include "interruption.h"
#include "knownpolicies.h"
#include "switches.h"
#include "text.h"

#include <algorithm>

namespace {

const QLatin1String PolicyKind("policy");
const QLatin1String SwitchKind("switch");
const QLatin1String Kind("kind");
const QLatin1String Key("key");
const QLatin1String Before("before");
const QLatin1String Value("value");

const PolicyState *find(const QVector<PolicyState> &policies, const QString &key)
{
    const auto found =
        std::find_if(policies.begin(), policies.end(),
                     [&key](const PolicyState &policy) { return policy.key == key; });
    return found == policies.end() ? nullptr : &*found;
}

Failure obstacle(const QString &name, const QString &message)
{
    return {ExitCode::Refused, name, message, {}};
}

/// The first switch that forces @p policy off and is not named in the file.
QString unwantedSwitch(const PolicyState &policy, const DesiredState &desired)
{
    for (const Daemon::Switch &governor : policy.switches) {
        if (!governor.value && !desired.switches.contains(governor.key))
            return governor.key;
    }
    return {};
}

/// The failure why @p policy cannot become @p wanted, if it cannot.
Outcome obstacleTo(const PolicyState &policy, bool wanted, const DesiredState &desired)
{
    if (!wanted)
        return std::nullopt;
    if (policy.reason() == Reason::Lock)
        return obstacle(
            QStringLiteral("locked"),
            QStringLiteral("%1 cannot be switched on: %2").arg(policy.key, policy.shortReason()));
    if (const QString governor = unwantedSwitch(policy, desired); !governor.isNull())
        return obstacle(QStringLiteral("switched-off"),
                        QStringLiteral("%1 would stay off: switch %2 is off, and the file does not "
                                       "name it")
                            .arg(policy.key, cited(governor)));
    return std::nullopt;
}

bool isAlready(const PolicyState &policy, bool wanted)
{
    switch (policy.reason()) {
    case Reason::Lock:
        return !wanted;
    case Reason::Switch:
        return policy.stored == wanted;
    case Reason::File:
    case Reason::NoValue:
        return false;
    case Reason::Stored:
    case Reason::Unknown:
        return policy.value == wanted;
    }
    Q_UNREACHABLE();
}

void planPolicies(Plan &plan, const DesiredState &desired, const Snapshot &snapshot)
{
    for (auto entry = desired.policies.begin(); entry != desired.policies.end(); ++entry) {
        if (entry.key() == QLatin1String("NoPolicy")) // a line of the daemon's own file
            continue;
        const PolicyState *policy = find(snapshot.policies, entry.key());
        if (!policy)
            plan.obstacles.append(unknownPolicy(entry.key()));
        else if (const Outcome failure = obstacleTo(*policy, entry.value(), desired))
            plan.obstacles.append(*failure);
        else if (isAlready(*policy, entry.value()))
            plan.kept.append({Step::Kind::Policy, entry.key(), entry.value(), entry.value()});
        else
            plan.steps.append({Step::Kind::Policy, entry.key(),
                               policy->reason() == Reason::Switch ? policy->stored : policy->value,
                               entry.value()});
    }
}

void planSwitches(Plan &plan, const DesiredState &desired, const Snapshot &snapshot)
{
    QMap<QString, bool> known;
    for (const Daemon::Switch &governor : snapshot.switches)
        known.insert(governor.key, governor.value);
    for (auto entry = desired.switches.begin(); entry != desired.switches.end(); ++entry) {
        if (const Outcome failure = checkSwitch(entry.key(), known.keys()))
            plan.obstacles.append(*failure);
        else if (known.value(entry.key()) == entry.value())
            plan.kept.append({Step::Kind::Switch, entry.key(), entry.value(), entry.value()});
        else
            plan.steps.append({Step::Kind::Switch, entry.key(), !entry.value(), entry.value()});
    }
}

/// Takes back the steps that were made and that nobody has changed since, the last one first. A
/// daemon that does not answer may make a write later, so no more are sent to it then.
void takeBack(Daemon &daemon, Application &application)
{
    daemon.restartDeadline();
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    Outcome failure = snapshot ? Outcome() : snapshot.failure();
    for (int i = application.done.size() - 1; i >= 0 && !isUncertain(failure); --i) {
        const Step step = application.done[i];
        if (!step.before)
            continue;
        const bool isMade = valueNow(*snapshot, step) == step.value;
        failure = isMade ? writeStep(daemon, step, *step.before) : Outcome();
        if (failure)
            continue;
        application.done.removeAt(i);
        if (isMade)
            application.takenBack.append(step);
    }
}

Failure interrupted()
{
    return {ExitCode::NoAnswer,
            QStringLiteral("interrupted"),
            QStringLiteral("interrupted by a signal"),
            {}};
}

} // namespace

std::optional<bool> valueNow(const Snapshot &snapshot, const Step &step)
{
    if (step.kind == Step::Kind::Policy) {
        const PolicyState *policy = find(snapshot.policies, step.key);
        if (!policy)
            return std::nullopt;
        return policy->stored ? policy->stored : policy->value;
    }
    for (const Daemon::Switch &governor : snapshot.switches) {
        if (governor.key == step.key)
            return governor.value;
    }
    return std::nullopt;
}

bool isUncertain(const Outcome &failure)
{
    return failure && (failure->code == ExitCode::NoAnswer || failure->code == ExitCode::NoDaemon);
}

Outcome writeStep(Daemon &daemon, const Step &step, bool value)
{
    const Result<bool> accepted = step.kind == Step::Kind::Switch
        ? daemon.setSwitch(step.key, value)
        : daemon.setPolicy(step.key, value);
    if (!accepted) {
        Failure failure = accepted.failure();
        failure.message = QStringLiteral("%1: %2").arg(step.name(), failure.message);
        return failure;
    }
    if (*accepted)
        return std::nullopt;
    return Failure{
        ExitCode::Refused,
        QStringLiteral("refused"),
        QStringLiteral("the daemon refused to change %1; its log says more").arg(step.name()),
        {}};
}

QString Step::name() const
{
    return kind == Kind::Switch ? QStringLiteral("switch %1").arg(cited(key)) : key;
}

QJsonObject Step::toJson() const
{
    return {{::Kind, kind == Kind::Switch ? SwitchKind : PolicyKind},
            {Key, key},
            {Before, valueToJson(before)},
            {Value, value}};
}

std::optional<Step> Step::fromJson(const QJsonObject &object)
{
    const QString kind = object.value(::Kind).toString();
    const QJsonValue before = object.value(Before);
    const QJsonValue value = object.value(Value);
    if ((kind != PolicyKind && kind != SwitchKind) || !before.isBool() || !value.isBool())
        return std::nullopt;
    return Step{kind == SwitchKind ? Kind::Switch : Kind::Policy, object.value(Key).toString(),
                before.toBool(), value.toBool()};
}

QJsonArray toJson(const QVector<Step> &steps)
{
    QJsonArray result;
    for (const Step &step : steps)
        result.append(step.toJson());
    return result;
}

bool contains(const QVector<Step> &steps, const Step &step)
{
    return std::any_of(steps.begin(), steps.end(),
                       [&step](const Step &other) { return other.isOfSame(step); });
}

Plan planFor(const DesiredState &desired, const Snapshot &snapshot)
{
    Plan plan;
    planPolicies(plan, desired, snapshot);
    planSwitches(plan, desired, snapshot);
    std::stable_sort(plan.steps.begin(), plan.steps.end(),
                     [](const Step &a, const Step &b) { return a.value < b.value; });
    return plan;
}

Application carryOut(Daemon &daemon, const QVector<Step> &steps)
{
    Application result;
    const Interruption interruption;
    for (int i = 0; i < steps.size() && !result.failure; ++i) {
        result.failure = writeStep(daemon, steps[i], steps[i].value);
        if (!result.failure || isUncertain(result.failure))
            result.done.append(steps[i]);
        if (!result.failure && interruption.hasCome() && i + 1 < steps.size())
            result.failure = interrupted();
    }
    if (result.failure)
        takeBack(daemon, result);
    return result;
}
