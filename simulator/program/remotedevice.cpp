// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/remotedevice.h"

#include "commandline/text.h"
#include "names.h"
#include "simulator/program/bus.h"
#include "simulator/program/controlnames.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QJsonDocument>

#include <algorithm>

namespace Simulator {
namespace {

QJsonObject parse(const QVariant &state)
{
    return QJsonDocument::fromJson(state.toString().toUtf8()).object();
}

Failure badAnswer()
{
    return {ExitCode::NoDaemon,
            QStringLiteral("bad-answer"),
            Text::tr("what has the name %1 is no device of this version; end it and run "
                     "\"govd-sim device\"")
                .arg(ControlNames::Service),
            {}};
}

} // namespace

RemoteDevice::RemoteDevice(std::chrono::milliseconds timeout)
    : m_timeout(timeout)
    , m_deadline(timeout)
    , m_busTrouble(Bus::connect(m_deadline, timeout))
{
}

Result<QJsonObject> RemoteDevice::state()
{
    const Result<QVariantList> answer = call(Names::Properties, QStringLiteral("Get"),
                                             {ControlNames::Interface, ControlNames::State});
    if (!answer)
        return answer.failure();
    const QJsonObject state = parse(answer->value(0).value<QDBusVariant>().variant());
    if (state.isEmpty())
        return badAnswer();
    return state;
}

Result<QVariantList> RemoteDevice::order(const QString &method, const QVariantList &arguments)
{
    return call(ControlNames::Interface, method, arguments);
}

void RemoteDevice::follow()
{
    if (m_busTrouble)
        return;
    QDBusConnection bus = QDBusConnection::systemBus();
    bus.connect(ControlNames::Service, ControlNames::Path, Names::Properties,
                QStringLiteral("PropertiesChanged"), this, SLOT(onPropertiesChanged(QDBusMessage)));
    bus.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SIGNAL(lost()));
    auto *watcher = new QDBusServiceWatcher(ControlNames::Service, bus,
                                            QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, &RemoteDevice::lost);
}

Failure RemoteDevice::absence() const
{
    if (!QDBusConnection::systemBus().isConnected())
        return Bus::absence(Text::tr("the connection to the system bus was lost; check that dbus "
                                     "runs"));
    return {ExitCode::NoDaemon,
            QStringLiteral("no-device"),
            Text::tr("no device is on the system bus; run \"govd-sim device\" in another terminal"),
            {}};
}

void RemoteDevice::onPropertiesChanged(const QDBusMessage &message)
{
    const auto properties = qdbus_cast<QVariantMap>(message.arguments().value(1));
    const QJsonObject state = parse(properties.value(ControlNames::State));
    if (!state.isEmpty())
        Q_EMIT changed(state);
}

Result<QVariantList> RemoteDevice::call(const QString &interface, const QString &method,
                                        const QVariantList &arguments)
{
    if (m_busTrouble)
        return *m_busTrouble;
    QDBusMessage message = QDBusMessage::createMethodCall(ControlNames::Service, ControlNames::Path,
                                                          interface, method);
    message.setArguments(arguments);
    const int left = static_cast<int>(std::max<qint64>(1, m_deadline.remainingTime()));
    const QDBusMessage reply = QDBusConnection::systemBus().call(message, QDBus::Block, left);
    if (reply.type() != QDBusMessage::ReplyMessage)
        return failureOf(reply);
    return reply.arguments();
}

Failure RemoteDevice::failureOf(const QDBusMessage &reply) const
{
    const QString text = printable(reply.errorMessage());
    if (reply.errorName() == ControlNames::Unknown)
        return {ExitCode::Usage, QStringLiteral("unknown"), text, {}};
    if (reply.errorName() == ControlNames::Refused)
        return {ExitCode::Refused, QStringLiteral("refused"), text, {}};
    switch (QDBusError(reply).type()) {
    case QDBusError::NoReply:
        return noReply();
    case QDBusError::ServiceUnknown:
    case QDBusError::Disconnected:
        return absence();
    default:
        return badAnswer();
    }
}

/// The bus says NoReply also of a partner who has left, and a timer can end a little before its
/// time: who still has the name tells the two apart. A bus that does not even say that is silent.
Failure RemoteDevice::noReply() const
{
    constexpr int Patience = 1000;
    QDBusMessage question =
        QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                       Names::BusDaemon.interface, QStringLiteral("NameHasOwner"));
    question << ControlNames::Service;
    const QDBusReply<bool> isOwned =
        QDBusConnection::systemBus().call(question, QDBus::Block, Patience);
    if (!QDBusConnection::systemBus().isConnected() || (isOwned.isValid() && !isOwned.value()))
        return absence();
    return Bus::silence(isOwned.isValid() ? Text::tr("the device") : Text::tr("the system bus"),
                        m_timeout);
}

} // namespace Simulator
