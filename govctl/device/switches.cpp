// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "switches.h"

#include "knownpolicies.h"
#include "text.h"
#include "usage.h"

#include <QJsonArray>

#include <algorithm>

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
        return unknownName(QStringLiteral("unknown-switch"), QStringLiteral("switch"), known, key,
                           QStringLiteral("\"govctl switch list --keys\" names them"));
    return Failure{
        ExitCode::Usage,
        QStringLiteral("unknown-switch"),
        QStringLiteral("unknown switch %1: the daemon has no access switches, as long as no "
                       "plugin brings them")
            .arg(quoted(key)),
        {}};
}

Outcome checkNames(const QStringList &patterns, std::chrono::milliseconds timeout)
{
    for (const QString &pattern : patterns) {
        if (!KnownPolicies::matching(pattern).isEmpty())
            continue;
        Daemon daemon(timeout);
        if (!daemon.open())
            return std::nullopt;
        const Result<Daemon::Reading> reading = daemon.read({});
        if (!reading)
            return reading.failure();
        const QStringList &keys = reading->switchKeys;
        if (std::none_of(keys.begin(), keys.end(),
                         [&pattern](const QString &key) { return matchesAny({pattern}, key); }))
            return unknownPolicy(pattern);
    }
    return std::nullopt;
}
