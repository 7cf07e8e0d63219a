// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "caller.h"
#include "effects.h"
#include "evidence.h"
#include "forecast.h"
#include "knownpolicies.h"
#include "request.h"
#include "text.h"
#include "timelimit.h"
#include "writing.h"

namespace {

/// A policy before and after a write that the daemon accepted.
struct Change
{
    PolicyState before;
    Verdict after;
    bool requested;
    QStringList notes;

    /// Whether the daemon accepted the write, but the device does not show it.
    bool isContradicted() const
    {
        const bool isForced = !after.policy.forcingSwitch().isNull();
        return after.isContradicted() || (after.policy.value != requested && !isForced);
    }

    bool isChange() const
    {
        return before.value != after.policy.value || before.stored != after.policy.stored;
    }
};

Failure refusal(const PolicyState &before)
{
    QString why = QStringLiteral("it is locked, or the daemon could not save it");
    if (before.reason() == Reason::Lock)
        why = QStringLiteral("it is locked");
    else if (before.value.value_or(false))
        why = QStringLiteral("it could not be saved");
    return {ExitCode::Refused,
            QStringLiteral("refused"),
            QStringLiteral("the daemon refused to change %1: %2; its log and \"govctl explain %1\" "
                           "say more")
                .arg(before.key, why),
            {}};
}

QString changeText(const Change &change, const Output &output)
{
    const PolicyState &after = change.after.policy;
    if (change.before.value != after.value) {
        return QStringLiteral("%1: %2 -> %3\n")
            .arg(after.key, output.paint(change.before.value), output.paint(after.value));
    }
    if (!after.forcingSwitch().isNull()) {
        // If this user may not read the stored value, a change of it is not known.
        const QString form = after.stored && !change.isChange()
            ? QStringLiteral("%1 still reads off, because switch %2 is off; stored is %3 already, "
                             "and was saved again\n")
            : QStringLiteral("%1 still reads off, because switch %2 is off; stored is now %3\n");
        return form.arg(after.key, quoted(after.forcingSwitch()), onOff(change.requested));
    }
    if (after.value == change.requested)
        return QStringLiteral(
                   "%1 is %2 already; it was saved and recorded again, and not enforced\n")
            .arg(after.key, output.paint(after.value));
    return QStringLiteral("the daemon accepted %1, but %2 still reads %3: %4\n")
        .arg(onOff(change.requested), after.key, output.paint(after.value), after.shortReason());
}

QString toText(const Change &change, const Output &output)
{
    QString text = changeText(change, output);
    for (const QString &note : change.notes)
        text += note + QLatin1Char('\n');
    return text;
}

QJsonObject toJson(const Change &change)
{
    return {{QStringLiteral("policy"), change.after.policy.toJson()},
            {QStringLiteral("before"), valueToJson(change.before.value)},
            {QStringLiteral("requested"), change.requested},
            {QStringLiteral("changed"), change.isChange()},
            {QStringLiteral("force"), stateName(change.after.state())},
            {QStringLiteral("notes"), QJsonArray::fromStringList(change.notes)}};
}

QStringList notesOn(const Change &change, const Snapshot &before)
{
    QStringList notes;
    if (change.before.value != change.after.policy.value)
        notes +=
            sharedModeNotes(before, change.before.type, change.after.policy.value.value_or(false));
    return notes + forceNotes(change.after);
}

ExitCode foretell(const Request &request, Output &output, Daemon &daemon, const Snapshot &snapshot,
                  const PolicyState &policy)
{
    if (const Outcome failure = checkRight(daemon))
        return output.fail(*failure);
    if (policy.reason() == Reason::Lock)
        return output.fail(refusal(policy));
    Forecast forecast = forecastPolicy(snapshot, policy.key, request.value(1));
    forecast.addAbsences(daemon);
    return output.write(ExitCode::Done, forecast.toJson(), forecast.toText());
}

} // namespace

ExitCode Verbs::set(const Request &request, Output &output)
{
    const QString key = request.arguments.constFirst();
    const bool requested = request.value(1);

    Daemon daemon(request.timeout, waitingNote(output));
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> before = takeSnapshot(daemon, KnownPolicies::keys());
    if (!before)
        return output.fail(before.failure());
    const PolicyState policy = before->policies[KnownPolicies::keys().indexOf(key)];
    if (const Outcome failure = TimeLimit::checkRight(request))
        return output.fail(*failure);
    if (request.has(QStringLiteral("dry-run")))
        return foretell(request, output, daemon, *before, policy);

    const Step step{Step::Kind::Policy, key, policy.stored ? policy.stored : policy.value,
                    requested};
    const Result<TimeLimit> begun = TimeLimit::begin(request, {step});
    if (!begun)
        return output.fail(begun.failure());
    TimeLimit limit = *begun;
    const Result<bool> accepted = daemon.setPolicy(key, requested);
    const Outcome failure = !accepted ? Outcome(accepted.failure())
        : *accepted                   ? Outcome()
                                      : refusal(policy);
    limit.settle(failure && !isUncertain(failure) ? QVector<Step>() : QVector<Step>{step}, failure);
    if (failure)
        return output.fail(*failure);

    const Result<Snapshot> after = takeSnapshot(daemon, {key});
    if (!after)
        return output.fail(after.failure());
    Change change{policy, settledVerdicts(daemon, after->policies).constFirst(), requested, {}};
    change.notes = notesOn(change, *before) + limit.notes();
    return output.write(change.isContradicted() ? ExitCode::NotInForce : ExitCode::Done,
                        toJson(change), toText(change, output));
}
