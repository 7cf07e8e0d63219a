// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/fakedaemon.h"

#include <QDBusVariant>

namespace {

const QString Service = QStringLiteral("org.kvt.PolicyManager");
const QString Path = QStringLiteral("/org/kvt/PolicyManager");

} // namespace

FakeDaemon::FakeDaemon(const QDBusConnection &connection)
    : m_connection(connection)
    , m_isThere(m_connection.registerVirtualObject(Path, this)
                && m_connection.registerService(Service))
{
    answer(QStringLiteral("Policy.KeyValue"), {QVariant::fromValue(QDBusVariant(true))});
    answer(QStringLiteral("Policy.SetKeyValue"), {true});
    answer(QStringLiteral("Switch.Keys"), {QStringList{QStringLiteral("radio")}});
    answer(QStringLiteral("Switch.KeyValue"), {QVariant::fromValue(QDBusVariant(true))});
    answer(QStringLiteral("Switch.KeyPolicyTypes"), {QVariant::fromValue(QList<int>{4})});
    answer(QStringLiteral("Switch.SetKeyValue"), {true});
}

FakeDaemon::~FakeDaemon()
{
    m_connection.unregisterObject(Path);
    m_connection.unregisterService(Service);
}

void FakeDaemon::answer(const QString &call, const QVariantList &arguments)
{
    handle(call, [this, arguments](const QDBusMessage &message) {
        m_connection.send(message.createReply(arguments));
    });
}

void FakeDaemon::handle(const QString &call, const Handler &handler)
{
    m_handlers.insert(call, handler);
}

void FakeDaemon::announce(const QString &key)
{
    QDBusMessage message = QDBusMessage::createSignal(
        Path, QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("PolicyChanged"));
    message << key << QVariant::fromValue(QDBusVariant(true));
    m_connection.send(message);
}

QString FakeDaemon::introspect(const QString &) const
{
    return {};
}

bool FakeDaemon::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    const QString call =
        message.interface().section(QLatin1Char('.'), -1) + QLatin1Char('.') + message.member();
    if (!m_handlers.contains(call))
        return false;
    m_calls.append(call);
    m_handlers.value(call)(message);
    return true;
}
