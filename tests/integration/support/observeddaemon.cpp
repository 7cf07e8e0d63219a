// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/observeddaemon.h"

namespace Support {

namespace {

const QString BusDaemon = QStringLiteral("org.freedesktop.DBus");

/// Calls that QtDBus makes for its own ends say nothing about the daemon.
bool isHousekeeping(const BusMessage &message)
{
    if (message.type == BusMessage::Call && message.destination == BusDaemon)
        return !message.member.startsWith(QLatin1String("GetConnection"));
    // Reading the description of a neighbour, and giving away the own one.
    return message.isCallOf(QStringLiteral("Introspect"))
        || (message.type == BusMessage::Return && message.signature == QLatin1String("s"));
}

QString textOf(const QVariant &argument)
{
    return argument.canConvert<QString>() ? argument.toString()
                                          : argument.toStringList().join(QLatin1Char(','));
}

QString line(const BusMessage &message, const QString &caller)
{
    QStringList words;
    if (message.type == BusMessage::Return)
        words.append(QStringLiteral("return"));
    else if (message.type == BusMessage::Error)
        words = QStringList{QStringLiteral("error"), message.errorName};
    else
        words.append(message.member);
    for (const QVariant &argument : message.arguments) {
        const QString text = textOf(argument);
        words.append(!caller.isEmpty() && text == caller ? QStringLiteral("caller") : text);
    }
    return words.join(QLatin1Char(' '));
}

} // namespace

bool ObservedDaemon::start()
{
    if (!m_daemon.start())
        return false;
    m_monitor.settle();
    m_busName = m_monitor.uniqueName(QStringLiteral("org.kvt.PolicyManager"));
    return true;
}

void ObservedDaemon::forget()
{
    m_monitor.settle();
    m_systemLog.settle();
    m_monitor.clear();
    m_eventMark = m_systemLog.mark();
    m_logMark = m_daemon.mark();
}

QStringList ObservedDaemon::messages(const QString &caller)
{
    m_monitor.settle();
    const QVector<BusMessage> messages = m_monitor.messages([this](const BusMessage &message) {
        return message.sender == m_busName && !isHousekeeping(message);
    });
    QStringList lines;
    for (const BusMessage &message : messages)
        lines.append(line(message, caller));
    return lines;
}

QStringList ObservedDaemon::events()
{
    m_monitor.settle();
    m_systemLog.settle();
    QStringList lines;
    const QVector<SystemLogLine> entries = m_systemLog.lines(m_eventMark);
    for (const SystemLogLine &entry : entries)
        lines.append(entry.text);
    return lines;
}

QStringList ObservedDaemon::log()
{
    m_monitor.settle();
    QStringList lines = m_daemon.log(m_logMark);
    lines.removeAll(QStringLiteral("warning|default|Failed to disable USB devices connection."));
    return lines;
}

} // namespace Support
