// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/text.h"
#include "govctl/policystate.h"
#include "govctl/verb.h"

namespace {

/// A policy before and after a write that the daemon accepted.
struct Change
{
    PolicyState before;
    PolicyState after;
    bool requested;

    bool isChange() const { return before.value != after.value || before.stored != after.stored; }
};

Failure refusal(const PolicyState &before)
{
    QString why = Text::tr("it is locked, or the daemon could not save it");
    if (before.reason() == Reason::Lock)
        why = Text::tr("it is locked");
    else if (before.value.value_or(false))
        why = Text::tr("it could not be saved");
    return {ExitCode::Refused,
            QStringLiteral("refused"),
            Text::tr("the daemon refused to change %1: %2; its log and \"govctl explain %1\" say "
                     "more")
                .arg(before.key, why),
            {}};
}

QString toText(const Change &change, const Output &output)
{
    const PolicyState &after = change.after;
    if (change.before.value != after.value) {
        return Text::tr("%1: %2 -> %3\n")
            .arg(after.key, output.paint(change.before.value), output.paint(after.value));
    }
    if (!after.forcingSwitch().isNull()) {
        // Where this user may not read what is stored, it may have changed as well as not.
        const QString form = after.stored && !change.isChange()
            ? Text::tr("%1 still reads off, because switch %2 is off; stored is %3 already; "
                       "nothing changed\n")
            : Text::tr("%1 still reads off, because switch %2 is off; stored is now %3\n");
        return form.arg(after.key, quoted(after.forcingSwitch()), onOff(change.requested));
    }
    if (after.value == change.requested)
        return Text::tr("%1 is %2 already; nothing changed\n")
            .arg(after.key, output.paint(after.value));
    return Text::tr("the daemon accepted %1, but %2 still reads %3: %4\n")
        .arg(onOff(change.requested), after.key, output.paint(after.value), after.shortReason());
}

QJsonObject toJson(const Change &change)
{
    return {{QStringLiteral("policy"), change.after.toJson()},
            {QStringLiteral("before"), valueToJson(change.before.value)},
            {QStringLiteral("requested"), change.requested},
            {QStringLiteral("changed"), change.isChange()}};
}

} // namespace

ExitCode Verbs::set(const Request &request, Output &output)
{
    const QStringList keys{request.arguments.constFirst()};
    const bool requested = request.value(1);

    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> before = takeSnapshot(daemon, keys);
    if (!before)
        return output.fail(before.failure());

    const Result<bool> accepted = daemon.setPolicy(keys.constFirst(), requested);
    if (!accepted)
        return output.fail(accepted.failure());
    if (!*accepted)
        return output.fail(refusal(before->policies.constFirst()));

    const Result<Snapshot> after = takeSnapshot(daemon, keys);
    if (!after)
        return output.fail(after.failure());
    const Change change{before->policies.constFirst(), after->policies.constFirst(), requested};
    return output.write(ExitCode::Done, toJson(change), toText(change, output));
}
