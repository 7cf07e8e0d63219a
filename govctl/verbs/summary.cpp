// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "knownpolicies.h"
#include "policystate.h"
#include "request.h"
#include "text.h"

#include <QJsonArray>

namespace {

QString row(const QString &name, const QString &text)
{
    return QStringLiteral("%1 %2\n").arg(name.leftJustified(9), text);
}

/// The number of policies with one value, by reason.
struct Count
{
    int on = 0;
    int off = 0;
    int none = 0;
    int bySwitch = 0;
    int byLock = 0;
};

Count countOf(const QVector<PolicyState> &policies)
{
    Count count;
    for (const PolicyState &policy : policies) {
        ++(policy.value ? (*policy.value ? count.on : count.off) : count.none);
        count.bySwitch += policy.reason() == Reason::Switch ? 1 : 0;
        count.byLock += policy.reason() == Reason::Lock ? 1 : 0;
    }
    return count;
}

QString reasonsText(const Count &count)
{
    QStringList reasons;
    if (count.bySwitch > 0)
        reasons.append(QStringLiteral("%1 by a switch").arg(count.bySwitch));
    if (count.byLock > 0)
        reasons.append(QStringLiteral("%1 locked").arg(count.byLock));
    return reasons.isEmpty() ? QString()
                             : QStringLiteral(" (%1)").arg(reasons.join(QStringLiteral(", ")));
}

QString toText(const Count &count, const Snapshot &snapshot, const Output &output)
{
    QString policies = QStringLiteral("%1 on, %2 off").arg(count.on).arg(count.off);
    policies += reasonsText(count);
    if (count.none > 0)
        policies += QStringLiteral(", %1 without a value").arg(count.none);
    QString text = row(QStringLiteral("policies"), policies);
    for (const PolicyState &policy : snapshot.policies) {
        if (!policy.value.value_or(false))
            text += row({}, policy.key + QLatin1Char(' ') + output.paint(policy.value));
    }
    for (const Daemon::Switch &governor : snapshot.switches)
        text += row(QStringLiteral("switch"),
                    quoted(governor.key) + QLatin1Char(' ') + output.paint(governor.value));
    return text + QStringLiteral("\"%1 --help\" names the verbs.\n").arg(programName());
}

QJsonObject toJson(const Count &count, const Snapshot &snapshot)
{
    QJsonArray switches;
    for (const Daemon::Switch &governor : snapshot.switches) {
        if (!governor.value)
            switches.append(governor.key);
    }
    return {{QStringLiteral("on"), count.on},
            {QStringLiteral("off"), count.off},
            {QStringLiteral("none"), count.none},
            {QStringLiteral("offBySwitch"), count.bySwitch},
            {QStringLiteral("offByLock"), count.byLock},
            {QStringLiteral("switchesOff"), switches}};
}

} // namespace

ExitCode Verbs::summary(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return output.fail(snapshot.failure());
    const Count count = countOf(snapshot->policies);
    return output.write(ExitCode::Done, toJson(count, *snapshot), toText(count, *snapshot, output));
}
