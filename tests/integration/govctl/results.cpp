// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/results.h"

#include <QJsonArray>

QJsonObject policyIn(const QJsonObject &result, const QString &key)
{
    for (const QJsonValue policy : result.value(QStringLiteral("policies")).toArray()) {
        if (policy.toObject().value(QStringLiteral("key")) == key)
            return policy.toObject();
    }
    return {};
}

QJsonObject policy(const QJsonObject &result)
{
    return result.value(QStringLiteral("policy")).toObject();
}
