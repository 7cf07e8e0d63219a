// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"

#include "support/waiting.h"

#include <QDBusPendingCall>
#include <QDBusVariant>

#include <algorithm>

namespace Support {

namespace {

const QString Service = QStringLiteral("org.kvt.PolicyManager");

QVariant content(const QDBusMessage &reply)
{
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

QDBusMessage question(const QString &key)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        Service, QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("KeyValue"));
    message.setArguments({key});
    return message;
}

} // namespace

QDBusMessage Client::call(const QString &interface, const QString &method,
                          const QVariantList &arguments)
{
    return callAny(Service + QLatin1Char('.') + interface, method, arguments);
}

QDBusMessage Client::callAny(const QString &interface, const QString &method,
                             const QVariantList &arguments, const QString &path)
{
    QDBusMessage message = QDBusMessage::createMethodCall(Service, path, interface, method);
    message.setArguments(arguments);
    return m_bus.call(message);
}

QVariant Client::policy(const QString &key)
{
    return content(call(QStringLiteral("Policy"), QStringLiteral("KeyValue"), {key}));
}

bool Client::haveNoValue(const QStringList &keys)
{
    QDBusConnection connection = m_bus.connect();
    QVector<QDBusPendingCall> questions;
    for (const QString &key : keys)
        questions.append(connection.asyncCall(question(key), 2 * Deadline));
    // The daemon takes messages of one client in order, and so it replies to them.
    QDBusMessage last = QDBusMessage::createMethodCall(
        Service, QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
    const QDBusPendingCall barrier = connection.asyncCall(last, 2 * Deadline);
    return waitFor([&] { return barrier.isFinished(); })
        && std::none_of(questions.cbegin(), questions.cend(),
                        [](const QDBusPendingCall &question) { return question.isFinished(); });
}

QVariant Client::switchValue(const QString &key)
{
    return content(call(QStringLiteral("Switch"), QStringLiteral("KeyValue"), {key}));
}

QStringList Client::switches()
{
    return call(QStringLiteral("Switch"), QStringLiteral("Keys"))
        .arguments()
        .value(0)
        .toStringList();
}

bool Client::setPolicy(const QString &key, const QVariant &value)
{
    return call(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {key, QVariant::fromValue(QDBusVariant(value))})
        .arguments()
        .value(0)
        .toBool();
}

} // namespace Support
