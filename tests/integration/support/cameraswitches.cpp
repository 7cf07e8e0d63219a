// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/cameraswitches.h"

#include "support/caller.h"

namespace Support {

CameraSwitches::CameraSwitches()
{
    setSwitch(QStringLiteral("a"), {2, 1}, true);
    setSwitch(QStringLiteral("b"), {1, 3, 1}, true);
    setSwitch(QStringLiteral("c"), {2}, false);
}

QStringList CameraSwitches::inOrder()
{
    QStringList keys =
        Caller().call(QStringLiteral("Switch"), QStringLiteral("Keys"), {}).value().toStringList();
    keys.removeAll(QStringLiteral("c"));
    return keys;
}

void CameraSwitches::setInOrder(bool first, bool second)
{
    const QStringList keys = inOrder();
    setEntry(keys.at(0), QStringLiteral("value"), first);
    setEntry(keys.at(1), QStringLiteral("value"), second);
}

QStringList CameraSwitches::callsFor(const QStringList &asked)
{
    QStringList calls(QStringLiteral("keyPolicyTypes"));
    for (const QString &key : asked)
        calls.append(QLatin1String("keyValue ") + key);
    return calls;
}

} // namespace Support
