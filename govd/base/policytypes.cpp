// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policytypes.h"

QMetaEnum PolicyTypes::enumeration()
{
    const QMetaObject &platform = Pellora::PolicyValue::staticMetaObject;
    return platform.enumerator(platform.indexOfEnumerator("PolicyType"));
}

QString typeToKey(Pellora::PolicyValue::PolicyType type)
{
    return QString::fromUtf8(PolicyTypes::enumeration().valueToKey(type));
}

Pellora::PolicyValue::PolicyType keyToType(const QString &key)
{
    // QMetaEnum also accepts a key with its class in front, under which no lock would be found.
    if (key.contains(QLatin1String("::")))
        return PolicyTypes::None;
    const int value = PolicyTypes::enumeration().keyToValue(key.toUtf8().constData());
    return value == -1 ? PolicyTypes::None : static_cast<PolicyType>(value);
}
