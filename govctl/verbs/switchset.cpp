// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "caller.h"
#include "forecast.h"
#include "knownpolicies.h"
#include "policystate.h"
#include "request.h"
#include "switches.h"
#include "text.h"
#include "timelimit.h"
#include "writing.h"

#include <QJsonArray>

namespace {

/// The state before and after the write of a switch.
struct Change
{
    QString key;
    bool requested;
    Snapshot before;
    Snapshot after;
    QStringList notes;

    bool valueIn(const Snapshot &snapshot) const
    {
        for (const Daemon::Switch &governor : snapshot.switches) {
            if (governor.key == key)
                return governor.value;
        }
        return false;
    }

    bool isChange() const { return valueIn(before) != valueIn(after); }
};

QJsonArray changedPolicies(const Change &change)
{
    QJsonArray result;
    for (int i = 0; i < change.after.policies.size(); ++i) {
        const PolicyState &before = change.before.policies[i];
        const PolicyState &after = change.after.policies[i];
        if (before.value != after.value)
            result.append(QJsonObject{{QStringLiteral("key"), after.key},
                                      {QStringLiteral("before"), valueToJson(before.value)},
                                      {QStringLiteral("value"), valueToJson(after.value)}});
    }
    return result;
}

QString headline(const Change &change, const Output &output)
{
    const bool value = change.valueIn(change.after);
    const QString name = quoted(change.key);
    if (change.isChange()) {
        return QStringLiteral("switch %1: %2 -> %3\n")
            .arg(name, output.paint(!value), output.paint(value));
    }
    if (value == change.requested)
        return QStringLiteral("switch %1 is %2 already; it was saved and recorded again\n")
            .arg(name, output.paint(value));
    return QStringLiteral("switch %1 still reads %2; its plugin accepted %3 and may be slow\n")
        .arg(name, output.paint(value), onOff(change.requested));
}

QString toText(const Change &change, const Output &output)
{
    QString text = headline(change, output);
    for (int i = 0; i < change.after.policies.size(); ++i) {
        const PolicyState &before = change.before.policies[i];
        const PolicyState &after = change.after.policies[i];
        if (before.value != after.value)
            text += QStringLiteral("  %1: %2 -> %3\n")
                        .arg(after.key, output.paint(before.value), output.paint(after.value));
    }
    for (const QString &note : change.notes)
        text += note + QLatin1Char('\n');
    return text;
}

QJsonObject toJson(const Change &change)
{
    return {{QStringLiteral("key"), change.key},
            {QStringLiteral("requested"), change.requested},
            {QStringLiteral("before"), change.valueIn(change.before)},
            {QStringLiteral("value"), change.valueIn(change.after)},
            {QStringLiteral("changed"), change.isChange()},
            {QStringLiteral("policies"), changedPolicies(change)},
            {QStringLiteral("notes"), QJsonArray::fromStringList(change.notes)}};
}

Failure refusal(const QString &key)
{
    return {
        ExitCode::Refused,
        QStringLiteral("refused"),
        QStringLiteral("the daemon refused to change switch %1: its plugin did not take the value, "
                       "or it could not be saved; the daemon's log says more")
            .arg(quoted(key)),
        {}};
}

QStringList keysOf(const QVector<Daemon::Switch> &switches)
{
    QStringList result;
    for (const Daemon::Switch &governor : switches)
        result.append(governor.key);
    return result;
}

ExitCode foretell(const Request &request, Output &output, Daemon &daemon, const Snapshot &snapshot)
{
    if (const Outcome failure = checkRight(daemon))
        return output.fail(*failure);
    Forecast forecast = forecastSwitch(snapshot, request.arguments.constFirst(), request.value(1));
    forecast.addAbsences(daemon);
    return output.write(ExitCode::Done, forecast.toJson(), forecast.toText());
}

} // namespace

ExitCode Verbs::switchSet(const Request &request, Output &output)
{
    const QString key = request.arguments.constFirst();
    const bool requested = request.value(1);

    Daemon daemon(request.timeout, waitingNote(output));
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> before = takeSnapshot(daemon, KnownPolicies::keys());
    if (!before)
        return output.fail(before.failure());
    if (const auto failure = checkSwitch(key, keysOf(before->switches)))
        return output.fail(*failure);

    if (request.has(QStringLiteral("dry-run")))
        return foretell(request, output, daemon, *before);

    const Result<bool> accepted = daemon.setSwitch(key, requested);
    if (!accepted)
        return output.fail(accepted.failure());
    if (!*accepted)
        return output.fail(refusal(key));
    TimeLimit limit;
    const Step step{Step::Kind::Switch, key, {}, requested};
    limit.settle({step});

    const Result<Snapshot> after = takeSnapshot(daemon, KnownPolicies::keys());
    if (!after)
        return output.fail(after.failure());
    const Result<ForceCheck> check = checkForce(daemon, {step});
    if (!check)
        return output.fail(check.failure());
    Change change{key, requested, *before, *after, check->notes + limit.notes()};
    if (change.isChange())
        change.notes += sharedModeNotes(*before, {step});
    return output.write(check->isContradicted ? ExitCode::NotInForce : ExitCode::Done,
                        toJson(change), toText(change, output));
}
