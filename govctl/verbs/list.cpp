// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/fields.h"
#include "govctl/knownpolicies.h"
#include "govctl/policystate.h"
#include "govctl/request.h"
#include "govctl/text.h"

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
                        {{QStringLiteral("keys"), QJsonArray::fromStringList(keys)}}, text);
}

/// The reason for the value, and a note that programs have to read a policy without a handler.
QString remark(const PolicyState &policy)
{
    QStringList remarks;
    if (const QString reason = policy.shortReason(); !reason.isEmpty())
        remarks.append(reason);
    if (!policy.isEnforced())
        remarks.append(QStringLiteral("only announced"));
    return remarks.join(QStringLiteral("; "));
}

QString toLine(const PolicyState &policy, int width, const Output &output)
{
    const QString padding(width - policy.key.size() + 2, QLatin1Char(' '));
    QString line = policy.key + padding + output.paint(policy.value);
    if (const QString text = remark(policy); !text.isEmpty()) {
        line += QString(6 - onOff(policy.value).size(), QLatin1Char(' '))
            + output.paint(Output::Style::Faint, text);
    }
    return line + QLatin1Char('\n');
}

QString toText(const QVector<PolicyState> &policies, const Request &request, const Output &output)
{
    const QString fields = request.options.value(QStringLiteral("fields"));
    int width = 0;
    for (const PolicyState &policy : policies)
        width = std::max(width, policy.key.size());
    QString text;
    for (const PolicyState &policy : policies)
        text += fields.isNull() ? toLine(policy, width, output)
                                : Fields::line(policy, fields.split(QLatin1Char(',')));
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
    return output.write(ExitCode::Done, {{QStringLiteral("policies"), policies}},
                        toText(listed, request, output));
}
