// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/switches.h"

#include "govctl/knownpolicies.h"
#include "govctl/text.h"
#include "govctl/usage.h"

#include <QJsonArray>

QStringList governedPolicies(const Daemon::Switch &governor)
{
    QStringList result;
    for (const int type : governor.types)
        result.append(KnownPolicies::key(type));
    return result;
}

QJsonObject toJson(const Daemon::Switch &governor)
{
    return {
        {QStringLiteral("key"), governor.key},
        {QStringLiteral("value"), governor.value},
        {QStringLiteral("policies"), QJsonArray::fromStringList(governedPolicies(governor))},
    };
}

Outcome checkSwitch(const QString &key, const QStringList &known)
{
    if (known.contains(key))
        return std::nullopt;
    if (!known.isEmpty())
        return unknownName(QStringLiteral("unknown-switch"), QStringLiteral("switch"), key, known,
                           QStringLiteral("\"govctl switch list --keys\" names them"));
    return Failure{
        ExitCode::Usage,
        QStringLiteral("unknown-switch"),
        QStringLiteral("unknown switch %1: the daemon has no access switches, as long as no "
                       "plugin brings them")
            .arg(quoted(key)),
        {}};
}
