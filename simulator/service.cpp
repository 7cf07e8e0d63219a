// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/service.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <iterator>

namespace Simulator {
namespace {

const QLatin1String IntrospectionInterface("org.freedesktop.DBus.Introspectable");
const QLatin1String PropertiesInterface("org.freedesktop.DBus.Properties");

/// Qt shares connections by name, and each presence of a service needs one of its own.
QString freshConnectionName(const QString &service)
{
    static std::atomic<int> count{0};
    return service + QLatin1Char('#') + QString::number(++count);
}

bool isIntrospection(const Call &call)
{
    return call.interface == IntrospectionInterface;
}

} // namespace

Service::Service(const QString &name)
    : m_name(name)
{
    qRegisterMetaType<Simulator::Call>();
}

Service::~Service()
{
    if (isPresent())
        QDBusConnection::disconnectFromBus(m_connectionName);
}

bool Service::appear()
{
    if (isPresent())
        return true;
    m_connectionName = freshConnectionName(m_name);
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_connectionName);
    const bool isReady =
        bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath)
        && bus.registerService(m_name);
    if (!isReady) {
        QDBusConnection::disconnectFromBus(m_connectionName);
        m_connectionName.clear();
        return false;
    }
    Q_EMIT presenceChanged(true);
    return true;
}

void Service::leave()
{
    if (!isPresent())
        return;
    QDBusConnection::disconnectFromBus(m_connectionName);
    m_connectionName.clear();
    Q_EMIT presenceChanged(false);
}

void Service::clearFaults()
{
    m_fault = {};
    m_memberFaults.clear();
}

QVector<Call> Service::calls(const QString &member) const
{
    QVector<Call> found;
    std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(found),
                 [&](const Call &call) { return call.member == member; });
    return found;
}

void Service::sendSignal(const QString &path, const QString &interface, const QString &member,
                         const QVariantList &arguments)
{
    if (!isPresent())
        return;
    QDBusMessage message = QDBusMessage::createSignal(path, interface, member);
    message.setArguments(arguments);
    QDBusConnection(m_connectionName).send(message);
}

void Service::sendPropertyChanged(const QString &path, const QString &interface,
                                  const QString &property)
{
    const QVariant value = m_objects.values(path, interface).value(property);
    sendSignal(path, PropertiesInterface, QStringLiteral("PropertiesChanged"),
               {interface, QVariantMap{{property, value}}, QStringList()});
}

void Service::sendPropertyInvalidated(const QString &path, const QString &interface,
                                      const QString &property)
{
    sendSignal(path, PropertiesInterface, QStringLiteral("PropertiesChanged"),
               {interface, QVariantMap(), QStringList(property)});
}

QString Service::introspect(const QString &path) const
{
    return m_objects.describe(path);
}

bool Service::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    // A call of a connection that is dropped already still comes through the event queue.
    if (connection.name() != m_connectionName)
        return true;
    Call call(message);
    const Fault fault = faultOf(call);
    const Reply reply = carryOut(call, fault);
    call.errorName = reply.errorName;
    if (!isIntrospection(call)) {
        m_calls.append(call);
        Q_EMIT called(call);
    }
    if (fault.kind == Fault::Death)
        leave();
    else if (fault.kind != Fault::Silence && message.isReplyRequired())
        answer(message, reply, fault.delay);
    return true;
}

Fault Service::faultOf(const Call &call) const
{
    return isIntrospection(call) ? Fault() : m_memberFaults.value(call.member, m_fault);
}

Reply Service::carryOut(const Call &call, const Fault &fault) const
{
    if (fault.kind == Fault::Error)
        return Reply::failure(fault.errorName, fault.errorText);
    if (fault.kind == Fault::Silence || fault.kind == Fault::Death)
        return {};
    const Reply reply =
        isIntrospection(call) ? Reply::of({introspect(call.path)}) : m_objects.run(call);
    if (fault.kind == Fault::WrongAnswer)
        return Reply::of(fault.answer);
    return reply;
}

void Service::answer(const QDBusMessage &message, const Reply &reply, int delay)
{
    const QDBusMessage sent = reply.isError()
        ? message.createErrorReply(reply.errorName, reply.errorText)
        : message.createReply(reply.values);
    if (delay == 0) {
        QDBusConnection(m_connectionName).send(sent);
        return;
    }
    // With the connection gone meanwhile, the answer goes nowhere.
    QTimer::singleShot(delay, this, [connectionName = m_connectionName, sent] {
        QDBusConnection(connectionName).send(sent);
    });
}

} // namespace Simulator
