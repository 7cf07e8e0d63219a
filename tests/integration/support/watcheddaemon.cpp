// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/watcheddaemon.h"

#include "support/wording.h"

#include <QDBusVariant>

namespace Support {

namespace {

const QLatin1String BusItself("org.freedesktop.DBus");

bool isIntrospection(const BusMessage &message)
{
    return message.isCallOf(QStringLiteral("Introspect"));
}

/// What QtDBus asks the bus for its own ends says nothing about the daemon.
bool isHousekeeping(const BusMessage &message)
{
    return message.type == BusMessage::Call && message.destination == BusItself
        && !message.member.startsWith(QLatin1String("GetConnection"));
}

/// Not enforcement: questions to the bus and about objects, the audit event, and the storage
/// service, of which only the order to unmount counts.
bool isEnforcement(const BusMessage &message)
{
    static const QStringList others{BusItself, QStringLiteral("org.kvtlabs.SystemLogs"),
                                    QStringLiteral("org.kvt.deviceinfo")};
    static const QStringList questions{QStringLiteral("Get"), QStringLiteral("GetManagedObjects")};
    return message.type == BusMessage::Call && !others.contains(message.destination)
        && !questions.contains(message.member);
}

} // namespace

WatchedDaemon::WatchedDaemon() = default;

bool WatchedDaemon::start()
{
    if (!m_daemon.start())
        return false;
    forget();
    return true;
}

bool WatchedDaemon::startObserved()
{
    if (!m_daemon.start())
        return false;
    m_monitor.settle();
    return true;
}

void WatchedDaemon::forget()
{
    m_monitor.settle();
    m_monitor.clear();
    m_systemLog.settle();
    m_systemLogStart = m_systemLog.mark();
    m_logStart = m_daemon.mark();
}

QVariant WatchedDaemon::set(const QString &key, const QVariant &value)
{
    return call(QStringLiteral("SetKeyValue"), {key, QVariant::fromValue(QDBusVariant(value))});
}

bool WatchedDaemon::change(const QString &key, bool value)
{
    return set(key, value) == QVariant(true);
}

QVariant WatchedDaemon::policy(const QString &key)
{
    return call(QStringLiteral("KeyValue"), {key}).value<QDBusVariant>().variant();
}

QStringList WatchedDaemon::said()
{
    QStringList lines;
    for (const BusMessage &message : sent()) {
        if (message.destination != BusItself)
            lines.append(Wording::exact(message));
    }
    return lines;
}

QStringList WatchedDaemon::messages(const QString &caller)
{
    QStringList lines;
    for (const BusMessage &message : sent()) {
        if (!isHousekeeping(message))
            lines.append(Wording::plain(message, caller));
    }
    return lines;
}

QStringList WatchedDaemon::calls(const QString &service)
{
    QStringList lines;
    for (const BusMessage &message : sent()) {
        if (isEnforcement(message) && (service.isEmpty() || message.destination == service))
            lines.append(Wording::call(message));
    }
    return lines;
}

bool WatchedDaemon::hasLeftAlone(const QString &service)
{
    m_monitor.settle();
    const QString daemon = uniqueName();
    const auto isAboutService = [&](const BusMessage &message) {
        return message.sender == daemon
            && (message.destination == service || message.arguments.value(0).toString() == service);
    };
    return m_monitor.messages(isAboutService).isEmpty();
}

QStringList WatchedDaemon::announcements()
{
    QStringList lines;
    for (const BusMessage &message : sent()) {
        if (message.type == BusMessage::Signal)
            lines.append(Wording::exact(message));
    }
    return lines;
}

QStringList WatchedDaemon::recorded()
{
    m_monitor.settle();
    m_systemLog.settle();
    QStringList texts;
    const QVector<SystemLogLine> lines = m_systemLog.lines(m_systemLogStart);
    for (const SystemLogLine &line : lines)
        texts.append(line.text);
    return texts;
}

QStringList WatchedDaemon::logged()
{
    m_monitor.settle();
    return m_daemon.log(m_logStart);
}

QStringList WatchedDaemon::complaints()
{
    QStringList lines = logged();
    lines.removeAll(QStringLiteral("warning|default|Failed to disable USB devices connection."));
    return lines;
}

QString WatchedDaemon::event(const QString &key, const QString &oldText, const QString &newText)
{
    return QLatin1String("call sendEventStringAlt")
        + Wording::exact({QStringLiteral("security-policy-changed"), QStringLiteral("INFO_LEVEL"),
                          eventText(key, oldText, newText)});
}

QString WatchedDaemon::announcement(const QString &key, bool value)
{
    return QLatin1String("signal PolicyChanged") + Wording::exact({key, value});
}

QString WatchedDaemon::eventText(const QString &key, const QString &oldText, const QString &newText)
{
    // Joined, not filled in, because texts with placeholders of their own are tested as well.
    return QLatin1String("Policy ") + key + QLatin1String(" changed. Old value ") + oldText
        + QLatin1String(". New value ") + newText + QLatin1Char('.');
}

QVector<BusMessage> WatchedDaemon::sent()
{
    m_monitor.settle();
    const QString daemon = uniqueName();
    const QVector<BusMessage> introspections = m_monitor.messages(isIntrospection);
    const auto answersIntrospection = [&](const BusMessage &message) {
        return std::any_of(introspections.begin(), introspections.end(),
                           [&](const BusMessage &call) { return message.answers(call); });
    };
    return m_monitor.messages([&](const BusMessage &message) {
        return message.sender == daemon && !isIntrospection(message)
            && !answersIntrospection(message);
    });
}

QVariant WatchedDaemon::call(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.kvt.PolicyManager"), QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.kvt.PolicyManager.Policy"), method);
    message.setArguments(arguments);
    const QDBusMessage reply = m_bus.call(message);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

QString WatchedDaemon::uniqueName()
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(BusItself, QStringLiteral("/org/freedesktop/DBus"),
                                       BusItself, QStringLiteral("GetNameOwner"));
    message.setArguments({QStringLiteral("org.kvt.PolicyManager")});
    const QDBusMessage reply = m_bus.call(message);
    if (reply.type() != QDBusMessage::ReplyMessage)
        qFatal("The daemon that is watched is not there");
    return reply.arguments().value(0).toString();
}

} // namespace Support
