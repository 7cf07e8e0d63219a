// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "forecast.h"

#include "carriers.h"
#include "effects.h"
#include "knownpolicies.h"
#include "text.h"

#include <QJsonArray>
#include <QSet>

#include <algorithm>
#include <utility>

namespace {

const PolicyState &stateOf(const Snapshot &snapshot, const QString &key)
{
    return *std::find_if(snapshot.policies.begin(), snapshot.policies.end(),
                         [&key](const PolicyState &policy) { return policy.key == key; });
}

/// The stored value if this user may read it, otherwise the effective value.
bool storedIn(const PolicyState &policy)
{
    return policy.stored.value_or(policy.value.value_or(false));
}

bool allOn(const QVector<Daemon::Switch> &switches)
{
    return std::all_of(switches.begin(), switches.end(),
                       [](const Daemon::Switch &governor) { return governor.value; });
}

void addReading(Forecast &forecast, const PolicyState &policy, bool value)
{
    if (policy.value != value)
        forecast.readings.append({policy.key, policy.value, value});
}

void addEnforcement(Forecast &forecast, const Snapshot &snapshot, const PolicyState &policy,
                    bool value)
{
    forecast.enforcements.append({policy.key, policy.type, value});
    forecast.notes += sharedModeNotes(snapshot, policy.type, value);
}

/// Makes @p snapshot the state after @p step, of which @p forecast tells the effective values.
void advance(Snapshot &snapshot, const Step &step, const Forecast &forecast)
{
    for (PolicyState &policy : snapshot.policies) {
        if (step.kind == Step::Kind::Policy && policy.key == step.key)
            policy.stored = step.value;
        for (Daemon::Switch &governor : policy.switches) {
            if (step.kind == Step::Kind::Switch && governor.key == step.key)
                governor.value = step.value;
        }
        for (const Forecast::Reading &reading : forecast.readings) {
            if (reading.key == policy.key)
                policy.value = reading.value;
        }
    }
}

} // namespace

void Forecast::addAbsences(Daemon &daemon)
{
    Surroundings surroundings(daemon);
    for (const Enforcement &enforcement : std::as_const(enforcements)) {
        const QStringList services = absentServices(surroundings, enforcement.type);
        for (const QString &service : services)
            notes.append(QStringLiteral("%1, which the daemon calls for %2, is not on the bus")
                             .arg(service, enforcement.key));
    }
}

QJsonObject Forecast::toJson() const
{
    QJsonArray reads;
    for (const Reading &reading : readings)
        reads.append(QJsonObject{{QStringLiteral("key"), reading.key},
                                 {QStringLiteral("before"), valueToJson(reading.before)},
                                 {QStringLiteral("value"), reading.value}});
    QJsonArray enforces;
    for (const Enforcement &enforcement : enforcements)
        enforces.append(QJsonObject{
            {QStringLiteral("key"), enforcement.key},
            {QStringLiteral("value"), enforcement.value},
            {QStringLiteral("effects"),
             QJsonArray::fromStringList(enforcementEffects(enforcement.type, enforcement.value))}});
    return {{QStringLiteral("dryRun"), true},
            {QStringLiteral("policies"), reads},
            {QStringLiteral("enforces"), enforces},
            {QStringLiteral("notes"), QJsonArray::fromStringList(notes)}};
}

QString Forecast::toText() const
{
    QString text = QStringLiteral("dry run: nothing is changed\n");
    for (const Reading &reading : readings)
        text += QStringLiteral("%1 would go from %2 to %3\n")
                    .arg(reading.key, onOff(reading.before), onOff(reading.value));
    if (readings.isEmpty())
        text += QStringLiteral("no policy would read otherwise\n");
    for (const Enforcement &enforcement : enforcements) {
        text += QStringLiteral("%1 would be enforced as %2: the daemon\n")
                    .arg(enforcement.key, onOff(enforcement.value));
        const QStringList effects = enforcementEffects(enforcement.type, enforcement.value);
        for (const QString &effect : effects)
            text += QStringLiteral("  - %1\n").arg(effect);
        if (effects.isEmpty())
            text += QStringLiteral("  - does nothing by itself\n");
    }
    for (const QString &note : notes)
        text += note + QLatin1Char('\n');
    return text;
}

Forecast forecastPolicy(const Snapshot &snapshot, const QString &key, bool value)
{
    const PolicyState &policy = stateOf(snapshot, key);
    Forecast forecast;
    addReading(forecast, policy, value && allOn(policy.switches));
    if (policy.value && storedIn(policy) == value) {
        forecast.notes.append(
            QStringLiteral("it would be saved and recorded again, and not enforced"));
        return forecast;
    }
    // On a write the daemon asks only the first switch that governs the policy.
    const bool isForced = !policy.switches.isEmpty() && !policy.switches.first().value;
    addEnforcement(forecast, snapshot, policy, value && !isForced);
    return forecast;
}

Forecast forecastSwitch(const Snapshot &snapshot, const QString &key, bool value)
{
    Forecast forecast;
    for (const PolicyState &policy : snapshot.policies) {
        QVector<Daemon::Switch> after = policy.switches;
        bool isGoverned = false;
        for (Daemon::Switch &governor : after) {
            isGoverned |= governor.key == key;
            governor.value = governor.key == key ? value : governor.value;
        }
        if (!isGoverned)
            continue;
        const bool isLocked = policy.reason() == Reason::Lock;
        addReading(forecast, policy, storedIn(policy) && allOn(after) && !isLocked);
        // On a change of a switch the daemon asks neither locks nor other switches.
        addEnforcement(forecast, snapshot, policy, storedIn(policy) && value);
    }
    return forecast;
}

QStringList sharedModeNotes(const Snapshot &snapshot, int type, bool value)
{
    QStringList notes;
    const auto others = sharingUsbMode(type);
    for (const int other : others) {
        const QString key = KnownPolicies::key(other);
        const PolicyState &policy = stateOf(snapshot, key);
        if (policy.value.value_or(false) != value)
            notes.append(QStringLiteral("the USB mode is shared with %1, which reads %2: the mode "
                                        "follows the one that was enforced last, so it is %3")
                             .arg(key, onOff(policy.value),
                                  value ? QStringLiteral("allowed") : QStringLiteral("forbidden")));
    }
    return notes;
}

QStringList sharedModeNotes(Snapshot snapshot, const QVector<Step> &steps)
{
    QVector<Forecast::Enforcement> enforced;
    for (const Step &step : steps) {
        const Forecast forecast = step.kind == Step::Kind::Policy
            ? forecastPolicy(snapshot, step.key, step.value)
            : forecastSwitch(snapshot, step.key, step.value);
        enforced += forecast.enforcements;
        advance(snapshot, step, forecast);
    }
    QStringList notes;
    QSet<int> decided; // the policies whose mode a later enforcement has decided
    for (int i = enforced.size() - 1; i >= 0; --i) {
        const Forecast::Enforcement &last = enforced[i];
        if (decided.contains(last.type))
            continue;
        notes += sharedModeNotes(snapshot, last.type, last.value);
        decided.insert(last.type);
        const auto others = sharingUsbMode(last.type);
        for (const int other : others)
            decided.insert(other);
    }
    return notes;
}
