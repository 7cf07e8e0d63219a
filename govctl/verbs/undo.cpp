// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "caller.h"
#include "history.h"
#include "knownpolicies.h"
#include "planning.h"
#include "request.h"
#include "text.h"
#include "timelimit.h"
#include "writing.h"

#include <utility>

namespace {

using Writes = QVector<RecordedWrite>;

Failure cannotUndo(const QString &name, const QString &message)
{
    return {ExitCode::Refused, name, message + QStringLiteral("; nothing was changed"), {}};
}

Outcome checkKey(const QStringList &arguments, const Snapshot &snapshot)
{
    for (const QString &key : arguments) {
        bool isKnown = KnownPolicies::type(key) != 0;
        for (const Daemon::Switch &governor : snapshot.switches)
            isKnown |= governor.key == key;
        if (!isKnown)
            return unknownPolicy(key);
    }
    return std::nullopt;
}

/// The value of the switch @p governor at the time of the write @p number.
bool valueThen(const Daemon::Switch &governor, const Writes &writes, int number)
{
    for (int i = number + 1; i < writes.size(); ++i) {
        if (writes[i].kind == Step::Kind::Switch && writes[i].key == governor.key)
            return RecordedWrite::parsed(writes[i].before).value_or(governor.value);
    }
    return governor.value;
}

/// The switch that forced the policy of the write @p number off before it, if one did. In that case
/// its stored value is not known: a record has the effective value only.
QString forcingSwitch(const Snapshot &snapshot, const Writes &writes, int number)
{
    const RecordedWrite &write = writes[number];
    if (write.kind != Step::Kind::Policy || RecordedWrite::parsed(write.before).value_or(true))
        return {};
    for (const PolicyState &policy : snapshot.policies) {
        if (policy.key != write.key)
            continue;
        for (const Daemon::Switch &governor : policy.switches) {
            if (!valueThen(governor, writes, number))
                return governor.key;
        }
    }
    return {};
}

/// The index of the last write that has changed something, or may have changed a stored value, of
/// the named policies and switches if any; -1 when there is none.
int lastChange(const Snapshot &snapshot, const Writes &writes, const QStringList &arguments)
{
    for (int i = writes.size() - 1; i >= 0; --i) {
        const bool mayBeMeant = arguments.isEmpty() || arguments.contains(writes[i].key);
        if (mayBeMeant && (writes[i].isChange() || !forcingSwitch(snapshot, writes, i).isNull()))
            return i;
    }
    return -1;
}

/// The write that takes back the write @p number.
Result<Step> stepBack(const Snapshot &snapshot, const Writes &writes, int number)
{
    const RecordedWrite &write = writes[number];
    const QString notUndoable = QStringLiteral("not-undoable");
    const std::optional<bool> before = RecordedWrite::parsed(write.before);
    const std::optional<bool> value = RecordedWrite::parsed(write.value);
    if (!before || !value)
        return cannotUndo(notUndoable,
                          QStringLiteral("the last change of %1 was %2, and only on and off can be "
                                         "set back")
                              .arg(write.name(), write.changeText()));
    if (write.kind == Step::Kind::Policy && KnownPolicies::type(write.key) == 0)
        return cannotUndo(notUndoable,
                          QStringLiteral("the last change was that of %1, which is no "
                                         "policy of this platform")
                              .arg(write.name()));
    const Step step{write.kind, write.key, value, *before};
    if (const std::optional<bool> now = valueNow(snapshot, step); now != value)
        return cannotUndo(QStringLiteral("changed-since"),
                          QStringLiteral("%1 was set to %2 at %3, but is %4 now: something else "
                                         "has changed it since")
                              .arg(write.name(), onOff(value), write.when(), onOff(now)));
    if (const QString governor = forcingSwitch(snapshot, writes, number); !governor.isNull())
        return cannotUndo(notUndoable,
                          QStringLiteral("%1 read off before its last change because switch %2 was "
                                         "off, so how it was stored is not on record")
                              .arg(write.name(), cited(governor)));
    return step;
}

QString announcement(const RecordedWrite &write)
{
    return QStringLiteral("taking back what %1 did with %2 at %3: %4: %5\n")
        .arg(write.user(), write.programText(), write.when(), write.name(), write.changeText());
}

QJsonObject toJson(const Request &request, const QJsonValue &write, const QVector<Step> &steps,
                   const QStringList &notes)
{
    return {{QStringLiteral("dryRun"), request.has(QStringLiteral("dry-run"))},
            {QStringLiteral("write"), write},
            {QStringLiteral("changes"), toJson(steps)},
            {QStringLiteral("notes"), QJsonArray::fromStringList(notes)}};
}

/// Reports what @p step has changed, and checks whether it is in force.
ExitCode report(const Request &request, Output &output, Daemon &daemon, const RecordedWrite &write,
                const Step &step, QStringList notes)
{
    const Result<ForceCheck> check = checkForce(daemon, {step});
    if (!check)
        return output.fail(check.failure());
    notes += check->notes;
    QString text = stepsText({step}, output);
    for (const QString &note : std::as_const(notes))
        text += note + QLatin1Char('\n');
    return output.write(check->isContradicted ? ExitCode::NotInForce : ExitCode::Done,
                        toJson(request, write.toJson(), {step}, notes), text);
}

} // namespace

ExitCode Verbs::undo(const Request &request, Output &output)
{
    Daemon daemon(request.timeout, waitingNote(output));
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return output.fail(snapshot.failure());
    if (const Outcome failure = checkKey(request.arguments, *snapshot))
        return output.fail(*failure);
    if (const Outcome failure = checkRight(daemon))
        return output.fail(*failure);

    const Result<Writes> writes =
        History::read(QStringLiteral("accepted"), QString(), request.timeout);
    if (!writes)
        return output.fail(writes.failure());
    const int last = lastChange(*snapshot, *writes, request.arguments);
    if (last < 0)
        return output.write(ExitCode::Done, toJson(request, {}, {}, {}),
                            QStringLiteral("the journal has no change to take back\n"));
    const Result<Step> step = stepBack(*snapshot, *writes, last);
    if (!step)
        return output.fail(step.failure());

    const RecordedWrite &write = writes->at(last);
    if (request.has(QStringLiteral("dry-run")))
        return output.write(ExitCode::Done, toJson(request, write.toJson(), {*step}, {}),
                            QStringLiteral("dry run: nothing is changed\n") + announcement(write)
                                + stepsText({*step}, output));
    if (!output.isJson())
        output.write(ExitCode::Done, {}, announcement(write));
    if (const Outcome failure = writeStep(daemon, *step, step->value))
        return output.fail(*failure);
    TimeLimit limit;
    limit.settle({*step});
    return report(request, output, daemon, write, *step, limit.notes());
}
