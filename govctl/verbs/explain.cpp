// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "effects.h"
#include "policystate.h"
#include "request.h"
#include "text.h"

#include <QJsonArray>

namespace {

QString row(const QString &name, const QString &text)
{
    return QStringLiteral("  %1 %2\n").arg(name.leftJustified(13), text);
}

QString storedText(const PolicyState &policy, const StoredValues &file)
{
    if (policy.stored)
        return onOff(policy.stored);
    switch (file.state) {
    case StoredValues::State::Read:
        return QStringLiteral("none in %1").arg(file.path);
    case StoredValues::State::Missing:
        return QStringLiteral("none, there is no file %1").arg(file.path);
    case StoredValues::State::Unreadable:
        return QStringLiteral("not known, this user may not read %1").arg(file.path);
    case StoredValues::State::Malformed:
        return QStringLiteral("not known, %1 is malformed").arg(file.path);
    }
    Q_UNREACHABLE();
}

/// A lock cannot be read over the bus: it is known only where nothing else can be the reason.
QString lockText(const PolicyState &policy)
{
    if (policy.reason() == Reason::Lock)
        return QStringLiteral(
            "yes, unless the file was edited since the daemon read it: it is stored on, and no "
            "switch keeps it off");
    // A locked policy always reads off, so one that reads on or has no value is not locked.
    if (policy.value.value_or(true) || !policy.canBeLocked)
        return QStringLiteral("no");
    if (policy.reason() == Reason::Unknown)
        return QStringLiteral("not known, as the stored value is not");
    return QStringLiteral("not known: it would read off without one as well");
}

QString whyText(const PolicyState &policy)
{
    const QString reason = policy.shortReason();
    return reason.isEmpty() ? QStringLiteral("it is stored so") : reason;
}

QString effectsText(const PolicyState &policy, bool value)
{
    const QStringList effects = enforcementEffects(policy.type, value);
    QString text = QStringLiteral("When %1 is enforced, the daemon\n").arg(onOff(value));
    if (effects.isEmpty())
        text += QStringLiteral("  - does nothing by itself\n");
    for (const QString &effect : effects)
        text += QStringLiteral("  - %1\n").arg(effect);
    return text;
}

QString toText(const PolicyState &policy, const StoredValues &file, const Output &output)
{
    QString text = QStringLiteral("%1 reads %2\n").arg(policy.key, output.paint(policy.value));
    text += row(QStringLiteral("why"), whyText(policy));
    text += row(QStringLiteral("stored"), storedText(policy, file));
    for (const Daemon::Switch &governor : policy.switches) {
        text += row(QStringLiteral("switch"),
                    quoted(governor.key) + QLatin1Char(' ') + output.paint(governor.value));
    }
    if (policy.switches.isEmpty())
        text += row(QStringLiteral("switch"), QStringLiteral("none governs it"));
    text += row(QStringLiteral("lock"), lockText(policy));
    return text + effectsText(policy, false) + effectsText(policy, true);
}

QJsonObject toJson(const PolicyState &policy)
{
    const auto effects = [&policy](bool value) {
        return QJsonArray::fromStringList(enforcementEffects(policy.type, value));
    };
    return {{QStringLiteral("policy"), policy.toJson()},
            {QStringLiteral("effects"),
             QJsonObject{{QStringLiteral("on"), effects(true)},
                         {QStringLiteral("off"), effects(false)}}}};
}

} // namespace

ExitCode Verbs::explain(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> snapshot = takeSnapshot(daemon, request.arguments);
    if (!snapshot)
        return output.fail(snapshot.failure());
    const PolicyState &policy = snapshot->policies.constFirst();
    return output.write(ExitCode::Done, toJson(policy), toText(policy, snapshot->file, output));
}
