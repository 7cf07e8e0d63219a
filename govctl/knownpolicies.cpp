// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/knownpolicies.h"

#include <QMetaEnum>

#include <pellorapolicy/policyvalue.h>

namespace {

QMetaEnum enumeration()
{
    const QMetaObject &meta = Pellora::PolicyValue::staticMetaObject;
    return meta.enumerator(meta.indexOfEnumerator("PolicyType"));
}

} // namespace

QStringList KnownPolicies::keys()
{
    const QMetaEnum policies = enumeration();
    QStringList result;
    for (int i = 0; i < policies.keyCount(); ++i) {
        if (policies.value(i) != 0)
            result.append(QString::fromLatin1(policies.key(i)));
    }
    return result;
}

int KnownPolicies::type(const QString &key)
{
    // The enumeration's own look-up would also take names with a scope in front.
    return keys().contains(key) ? enumeration().keyToValue(key.toUtf8().constData()) : 0;
}

QString KnownPolicies::key(int type)
{
    const char *key = enumeration().valueToKey(type);
    return key ? QString::fromLatin1(key) : QString::number(type);
}
