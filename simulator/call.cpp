// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/call.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace Simulator {
namespace {

QVariant plainValue(const QVariant &value);

QVariant plainArgument(const QDBusArgument &argument)
{
    if (argument.currentSignature() != QLatin1String("a{sv}"))
        return QVariant::fromValue(argument);
    auto map = qdbus_cast<QVariantMap>(argument);
    for (QVariant &value : map)
        value = plainValue(value);
    return map;
}

QVariant plainValue(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return plainValue(value.value<QDBusVariant>().variant());
    if (value.userType() == qMetaTypeId<QDBusObjectPath>())
        return value.value<QDBusObjectPath>().path();
    if (value.userType() == qMetaTypeId<QDBusArgument>())
        return plainArgument(value.value<QDBusArgument>());
    return value;
}

} // namespace

Call::Call(const QDBusMessage &message)
    : time(QDateTime::currentDateTime())
    , sender(message.service())
    , path(message.path())
    , interface(message.interface())
    , member(message.member())
    , signature(message.signature())
{
    for (const QVariant &argument : message.arguments())
        arguments.append(plainValue(argument));
}

} // namespace Simulator
