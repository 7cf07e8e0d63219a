// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/neighbours.h"

namespace Support {

namespace {

QString textOf(const QVariant &value)
{
    if (value.userType() != QMetaType::QVariantList)
        return value.toString();
    return QLatin1Char('[') + value.toStringList().join(QLatin1Char(',')) + QLatin1Char(']');
}

QString textOf(const BusMessage &call)
{
    QStringList arguments;
    for (const QVariant &argument : call.arguments)
        arguments.append(textOf(argument));
    return QStringLiteral("%1(%2)").arg(call.member, arguments.join(QLatin1Char(',')));
}

/// Calls of the daemon and of the bus have another aim. The storage service is asked by a library,
/// whenever that likes.
bool isOfNeighbour(const BusMessage &message)
{
    return message.type == BusMessage::Call
        && message.destination != QLatin1String("org.freedesktop.DBus")
        && message.destination != QLatin1String("org.freedesktop.UDisks2")
        && message.destination != QLatin1String("org.kvt.PolicyManager");
}

} // namespace

QStringList Neighbours::calls(const QString &service) const
{
    QStringList lines;
    const QVector<BusMessage> found = m_monitor.messages([&](const BusMessage &message) {
        return isOfNeighbour(message) && (service.isEmpty() || message.destination == service);
    });
    for (const BusMessage &call : found)
        lines.append(textOf(call));
    return lines;
}

} // namespace Support
