// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/text.h"
#include "govctl/knownpolicies.h"
#include "govctl/policystate.h"
#include "govctl/verb.h"

#include <QJsonArray>

#include <algorithm>

namespace {

/// The keys alone are the platform's: the daemon is not needed for them.
ExitCode listKeys(Output &output)
{
    const QStringList keys = KnownPolicies::keys();
    return output.write(ExitCode::Done,
                        {{QStringLiteral("keys"), QJsonArray::fromStringList(keys)}},
                        keys.join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

QString toLine(const PolicyState &policy, int width, const Output &output)
{
    const QString padding(width - policy.key.size() + 2, QLatin1Char(' '));
    QString line = policy.key + padding + output.paint(policy.value);
    if (const QString reason = policy.shortReason(); !reason.isEmpty()) {
        line += QString(6 - onOff(policy.value).size(), QLatin1Char(' '))
            + output.paint(Output::Style::Faint, reason);
    }
    return line + QLatin1Char('\n');
}

} // namespace

ExitCode Verbs::list(const Request &request, Output &output)
{
    if (request.has(QStringLiteral("keys")))
        return listKeys(output);

    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return output.fail(snapshot.failure());

    int width = 0;
    for (const PolicyState &policy : snapshot->policies)
        width = std::max(width, policy.key.size());
    QJsonArray policies;
    QString text;
    for (const PolicyState &policy : snapshot->policies) {
        if (request.has(QStringLiteral("off")) && policy.value.value_or(false))
            continue;
        policies.append(policy.toJson());
        text += toLine(policy, width, output);
    }
    return output.write(ExitCode::Done, {{QStringLiteral("policies"), policies}}, text);
}
