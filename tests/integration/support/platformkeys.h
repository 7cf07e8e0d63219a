// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_PLATFORMKEYS_H
#define GOVD_TESTS_SUPPORT_PLATFORMKEYS_H

#include <QMetaEnum>
#include <QStringList>

#include <pellorapolicy/policyvalue.h>

namespace Support {

/// The keys of all policies in the platform's order, that of no policy first.
inline QStringList platformKeys()
{
    const auto types = QMetaEnum::fromType<Pellora::PolicyValue::PolicyType>();
    QStringList keys;
    for (int i = 0; i < types.keyCount(); ++i)
        keys.append(QString::fromLatin1(types.key(i)));
    return keys;
}

} // namespace Support

#endif
