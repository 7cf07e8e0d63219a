// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/enforcement.h"

#include "support/caller.h"
#include "support/files.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace Support {

namespace {

QString jsonText(const QVariantList &values)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonArray::fromVariantList(values)).toJson(QJsonDocument::Compact));
}

/// Not enforcement: questions to the bus and about objects, the audit event, and the storage
/// service, of which only the order to unmount counts.
bool isEnforcement(const BusMessage &message)
{
    static const QStringList others{QStringLiteral("org.freedesktop.DBus"),
                                    QStringLiteral("org.kvtlabs.SystemLogs"),
                                    QStringLiteral("org.kvt.deviceinfo")};
    static const QStringList questions{QStringLiteral("Introspect"), QStringLiteral("Get"),
                                       QStringLiteral("GetManagedObjects")};
    return message.type == BusMessage::Call && !others.contains(message.destination)
        && !questions.contains(message.member);
}

} // namespace

Enforcement::Enforcement()
{
    Files::reset();
}

bool Enforcement::start()
{
    if (!m_daemon.start())
        return false;
    m_monitor.settle();
    m_name = m_monitor.uniqueName(QStringLiteral("org.kvt.PolicyManager"));
    return !m_name.isEmpty();
}

bool Enforcement::change(const QString &key, bool value)
{
    const Reply reply = Caller().setPolicy(key, value);
    return reply.arrived && !reply.isError() && reply.value() == true;
}

QStringList Enforcement::calls()
{
    return calls(QString());
}

QStringList Enforcement::calls(const QString &service)
{
    m_monitor.settle();
    QStringList texts;
    const QVector<BusMessage> calls = m_monitor.messages([&](const BusMessage &message) {
        return message.sender == m_name && isEnforcement(message)
            && (service.isEmpty() || message.destination == service);
    });
    for (const BusMessage &call : calls) {
        const QStringList target{call.destination, call.path, call.interface};
        texts.append(
            callText(target.join(QLatin1Char(' ')), call.member, call.signature, call.arguments));
    }
    return texts;
}

QStringList Enforcement::log()
{
    m_monitor.settle();
    return m_daemon.log(m_mark);
}

QStringList Enforcement::announcements()
{
    m_monitor.settle();
    QStringList texts;
    const QVector<BusMessage> own = m_monitor.messages([&](const BusMessage &message) {
        return message.sender == m_name && message.type == BusMessage::Signal;
    });
    for (const BusMessage &message : own)
        texts.append(message.member + QLatin1Char(' ') + jsonText(message.arguments));
    return texts;
}

void Enforcement::forget()
{
    m_monitor.settle();
    m_monitor.clear();
    m_mark = m_daemon.mark();
}

QString Enforcement::callText(const QString &target, const QString &method,
                              const QString &signature, const QVariantList &arguments)
{
    return QStringList{target, method, signature, jsonText(arguments)}.join(QLatin1Char(' '));
}

} // namespace Support
