// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "carriers.h"
#include "fields.h"
#include "knownpolicies.h"
#include "policystate.h"
#include "request.h"
#include "text.h"

#include <QJsonArray>

#include <algorithm>

namespace {

/// The keys come from the platform's enumeration: no daemon is needed.
ExitCode listKeys(const QStringList &keys, Output &output)
{
    QString text;
    for (const QString &key : keys)
        text += key + QLatin1Char('\n');
    return output.write(ExitCode::Done,
                        {{QStringLiteral("keys"), QJsonArray::fromStringList(keys)}}, text,
                        Output::Lines::Whole);
}

/// The reason for the value, and a note on what enforces the policy, if anything is missing there.
QString remark(const PolicyState &policy, Surroundings &surroundings)
{
    QStringList remarks;
    if (const QString reason = policy.shortReason(); !reason.isEmpty())
        remarks.append(reason);
    if (!policy.isEnforced())
        remarks.append(QStringLiteral("only announced"));
    const QStringList absent = absentServices(surroundings, policy.type);
    if (!absent.isEmpty())
        remarks.append(QStringLiteral("not enforced by %1, which is not on the bus")
                           .arg(absent.join(QStringLiteral(" and "))));
    return remarks.join(QStringLiteral("; "));
}

QString toLine(const PolicyState &policy, const QString &remark, int width, const Output &output)
{
    const QString padding(width - policy.key.size() + 2, QLatin1Char(' '));
    QString line = policy.key + padding + output.paint(policy.value);
    if (!remark.isEmpty()) {
        line += QString(6 - onOff(policy.value).size(), QLatin1Char(' '))
            + output.paint(Output::Style::Faint, remark);
    }
    return line + QLatin1Char('\n');
}

QString toText(const QVector<PolicyState> &policies, Daemon &daemon, const Output &output)
{
    Surroundings surroundings(daemon);
    int width = 0;
    for (const PolicyState &policy : policies)
        width = std::max(width, int(policy.key.size()));
    QString text;
    for (const PolicyState &policy : policies)
        text += toLine(policy, remark(policy, surroundings), width, output);
    return text;
}

QString fieldsText(const QVector<PolicyState> &policies, const QString &fields)
{
    QString text;
    for (const PolicyState &policy : policies)
        text += Fields::line(policy, fields.split(QLatin1Char(',')));
    return text;
}

} // namespace

ExitCode Verbs::list(const Request &request, Output &output)
{
    const QStringList keys = KnownPolicies::matching(request.arguments);
    const bool onlyOff = request.has(QStringLiteral("off"));
    const bool onlyKeys = request.has(QStringLiteral("keys"));
    if (onlyKeys && !onlyOff)
        return listKeys(keys, output);

    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> snapshot = takeSnapshot(daemon, keys);
    if (!snapshot)
        return output.fail(snapshot.failure());

    QVector<PolicyState> listed;
    QStringList listedKeys;
    QJsonArray policies;
    for (const PolicyState &policy : snapshot->policies) {
        if (onlyOff && policy.value.value_or(false))
            continue;
        listed.append(policy);
        listedKeys.append(policy.key);
        policies.append(policy.toJson());
    }
    if (onlyKeys)
        return listKeys(listedKeys, output);
    if (const QString fields = request.options.value(QStringLiteral("fields")); !fields.isNull())
        return output.write(ExitCode::Done, {}, fieldsText(listed, fields), Output::Lines::Whole);
    return output.write(ExitCode::Done, {{QStringLiteral("policies"), policies}},
                        toText(listed, daemon, output));
}
