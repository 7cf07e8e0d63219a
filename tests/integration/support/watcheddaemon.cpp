// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/watcheddaemon.h"

#include <QDBusVariant>
#include <QJsonArray>
#include <QJsonDocument>

namespace Support {

namespace {

const QLatin1String BusItself("org.freedesktop.DBus");

QString toText(const QVariantList &arguments)
{
    QString text;
    for (const QVariant &argument : arguments) {
        const QJsonArray one{QJsonValue::fromVariant(argument)};
        const QByteArray json = QJsonDocument(one).toJson(QJsonDocument::Compact);
        text += QLatin1Char(' ') + QString::fromUtf8(json.mid(1, json.size() - 2));
    }
    return text;
}

QString toText(const BusMessage &message)
{
    switch (message.type) {
    case BusMessage::Call:
        return QLatin1String("call ") + message.member + toText(message.arguments);
    case BusMessage::Signal:
        return QLatin1String("signal ") + message.member + toText(message.arguments);
    case BusMessage::Return:
        return QLatin1String("reply") + toText(message.arguments);
    case BusMessage::Error:
        return QLatin1String("error ") + message.errorName;
    }
    Q_UNREACHABLE();
}

bool isIntrospection(const BusMessage &message)
{
    return message.isCallOf(QStringLiteral("Introspect"));
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

QVariant WatchedDaemon::policy(const QString &key)
{
    return call(QStringLiteral("KeyValue"), {key}).value<QDBusVariant>().variant();
}

QStringList WatchedDaemon::said()
{
    m_monitor.settle();
    const QString daemon = uniqueName();
    const QVector<BusMessage> introspections = m_monitor.messages(isIntrospection);
    const auto answersIntrospection = [&](const BusMessage &message) {
        return std::any_of(introspections.begin(), introspections.end(),
                           [&](const BusMessage &call) { return message.answers(call); });
    };
    const auto counts = [&](const BusMessage &message) {
        return message.sender == daemon && message.destination != BusItself
            && !isIntrospection(message) && !answersIntrospection(message);
    };
    QStringList lines;
    const QVector<BusMessage> messages = m_monitor.messages(counts);
    for (const BusMessage &message : messages)
        lines.append(toText(message));
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

QString WatchedDaemon::event(const QString &key, const QString &oldText, const QString &newText)
{
    return QLatin1String("call sendEventStringAlt")
        + toText({QStringLiteral("security-policy-changed"), QStringLiteral("INFO_LEVEL"),
                  eventText(key, oldText, newText)});
}

QString WatchedDaemon::announcement(const QString &key, bool value)
{
    return QLatin1String("signal PolicyChanged") + toText({key, value});
}

QString WatchedDaemon::eventText(const QString &key, const QString &oldText, const QString &newText)
{
    // Joined, not filled in, because texts with placeholders of their own are tested as well.
    return QLatin1String("Policy ") + key + QLatin1String(" changed. Old value ") + oldText
        + QLatin1String(". New value ") + newText + QLatin1Char('.');
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
