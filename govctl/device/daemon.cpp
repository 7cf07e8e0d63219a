// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "daemon.h"

#include "daemonfailure.h"
#include "names.h"
#include "systembus.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <utility>

const QLatin1String Daemon::PolicyInterface("org.kvt.PolicyManager.Policy");
const QLatin1String Daemon::SwitchInterface("org.kvt.PolicyManager.Switch");

namespace {

const QLatin1String KeyValue("KeyValue");
const QLatin1String SetKeyValue("SetKeyValue");
const QLatin1String KeyPolicyTypes("KeyPolicyTypes");
const QLatin1String Keys("Keys");

bool booleanOf(const QDBusMessage &reply)
{
    return reply.arguments().constFirst().value<QDBusVariant>().variant().toBool();
}

} // namespace

Daemon::Daemon(std::chrono::milliseconds timeout, std::function<void()> onWait)
    : m_timeout(timeout)
    , m_deadline(timeout)
    , m_onWait(std::move(onWait))
    , m_bus(QString())
{
}

Daemon::~Daemon()
{
    if (m_bus.isConnected())
        settle(m_bus);
}

void Daemon::settle(const QDBusConnection &bus)
{
    constexpr int Patience = 1000;
    // The bus library's thread works in order, so this reply comes after all that is queued.
    bus.call(QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                            Names::BusDaemon.interface, QStringLiteral("GetId")),
             QDBus::Block, Patience);
}

Result<Daemon::Owner> Daemon::findOwner()
{
    if (const Outcome failure = connectToBus())
        return *failure;
    const Result<QVariant> connection = askBus(QStringLiteral("GetNameOwner"), Names::Service);
    if (!connection)
        return connection.failure();
    const Result<QVariant> user =
        askBus(QStringLiteral("GetConnectionUnixUser"), connection->toString());
    if (!user)
        return user.failure();
    return Owner{connection->toString(), user->toUInt()};
}

Result<Daemon::Owner> Daemon::open()
{
    Result<Owner> owner = findOwner();
    if (!owner)
        return owner;
    if (owner->user != 0)
        return DaemonFailure::foreignOwner(owner->user);
    m_owner = *owner;
    return owner;
}

void Daemon::restartDeadline()
{
    m_deadline = QDeadlineTimer(m_timeout);
}

Result<Daemon::Reading> Daemon::read(const QStringList &keys)
{
    QVector<QDBusPendingCall> calls;
    for (const QString &key : keys)
        calls.append(send(PolicyInterface, KeyValue, {key}));

    // The daemon sends no reply for a policy without a value. But it replies in order: after the
    // reply to this last call, no reply to an earlier one can come.
    const auto switchKeys = await(send(SwitchInterface, Keys, {}), {QStringLiteral("as")});
    if (!switchKeys)
        return switchKeys.failure();

    Reading result{{}, switchKeys->arguments().constFirst().toStringList()};
    for (const QDBusPendingCall &call : calls) {
        if (!call.isFinished()) {
            result.values.append(std::nullopt);
            continue;
        }
        const auto reply = await(call, {QStringLiteral("v")});
        if (!reply)
            return reply.failure();
        result.values.append(booleanOf(*reply));
    }
    return result;
}

Result<QVector<Daemon::Switch>> Daemon::readSwitches(const QStringList &keys)
{
    QVector<std::pair<QDBusPendingCall, QDBusPendingCall>> calls;
    for (const QString &key : keys)
        calls.append(
            {send(SwitchInterface, KeyValue, {key}), send(SwitchInterface, KeyPolicyTypes, {key})});

    QVector<Switch> result;
    Outcome failure;
    for (int i = 0; i < keys.size(); ++i) {
        const auto value = await(calls[i].first, {QStringLiteral("v")});
        const auto types = await(calls[i].second, {QStringLiteral("ai")});
        if (value && types)
            result.append({keys[i], booleanOf(*value), QDBusReply<QList<int>>(*types).value()});
        else if (!failure)
            failure = value ? types.failure() : value.failure();
    }
    if (failure)
        return *failure;
    return result;
}

Result<bool> Daemon::setPolicy(const QString &key, bool value)
{
    return write(PolicyInterface, key, value);
}

Result<bool> Daemon::setSwitch(const QString &key, bool value)
{
    return write(SwitchInterface, key, value);
}

QDBusMessage Daemon::ask(const Names::RemoteObject &object, const QString &method,
                         const QVariantList &arguments) const
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(object.service, object.path, object.interface, method);
    message.setArguments(arguments);
    const QDBusPendingCall call = dispatch(message);
    waitFor(call, std::min(m_deadline, QDeadlineTimer(std::chrono::seconds(2))));
    return call.isFinished() ? call.reply() : QDBusMessage();
}

Outcome Daemon::reload()
{
    const Result<QVariant> process =
        askBus(QStringLiteral("GetConnectionUnixProcessID"), m_owner.connection);
    if (!process)
        return process.failure();
    if (kill(process->toInt(), SIGHUP) == 0)
        return std::nullopt;
    return Failure{ExitCode::NotAllowed,
                   QStringLiteral("not-allowed"),
                   QStringLiteral("only root can have the daemon enforce its policies once more"),
                   {}};
}

/// The bus policy looks at the method's name only. The daemon has no SetKeyValue without arguments,
/// so a call that the bus passes on ends in an error and changes nothing.
Result<bool> Daemon::busPassesWrites()
{
    const QDBusPendingCall call = send(PolicyInterface, SetKeyValue, {});
    const Result<QDBusMessage> reply = await(call, {});
    if (!call.isFinished())
        return reply.failure();
    return call.error().type() != QDBusError::AccessDenied;
}

Outcome Daemon::connectToBus()
{
    if (!SystemBus::connect(m_deadline))
        return noAnswer();
    m_bus = QDBusConnection::systemBus();
    if (m_bus.isConnected())
        return std::nullopt;
    return DaemonFailure::noBus(m_bus.lastError().message());
}

Result<QVariant> Daemon::askBus(const QString &method, const QString &argument)
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        Names::BusDaemon.service, Names::BusDaemon.path, Names::BusDaemon.interface, method);
    question << argument;
    const auto reply = await(dispatch(question), {QStringLiteral("s"), QStringLiteral("u")});
    if (!reply)
        return reply.failure();
    return reply->arguments().constFirst();
}

QDBusPendingCall Daemon::send(const QString &interface, const QString &method,
                              const QVariantList &arguments) const
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(m_owner.connection, Names::ObjectPath, interface, method);
    message.setArguments(arguments);
    return dispatch(message);
}

/// Sends @p message with a time-out of the bus library that is longer than the deadline.
QDBusPendingCall Daemon::dispatch(QDBusMessage message) const
{
    constexpr int Later = 10'000;
    message.setAutoStartService(false);
    return m_bus.asyncCall(message, static_cast<int>(m_timeout.count()) + Later);
}

/// Returns when @p call is finished or @p deadline is over.
void Daemon::waitFor(const QDBusPendingCall &call, QDeadlineTimer deadline) const
{
    constexpr std::chrono::seconds Patience(2);
    if (call.isFinished())
        return;
    QEventLoop loop;
    const QDBusPendingCallWatcher watcher(call);
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(std::chrono::milliseconds(deadline.remainingTime()), &loop,
                       &QEventLoop::quit);
    if (m_onWait)
        QTimer::singleShot(Patience, &loop, [this] { std::exchange(m_onWait, {})(); });
    loop.exec();
}

/// Waits for the reply to @p call, which must have one of @p signatures.
Result<QDBusMessage> Daemon::await(const QDBusPendingCall &call,
                                   const QStringList &signatures) const
{
    waitFor(call, m_deadline);
    if (!call.isFinished())
        return noAnswer();
    if (call.isError())
        return DaemonFailure::fromError(call.error(),
                                        call.reply().service() == Names::BusDaemon.service);

    const QDBusMessage reply = call.reply();
    if (!signatures.contains(reply.signature()))
        return DaemonFailure::badAnswer(reply.signature());
    return reply;
}

Result<bool> Daemon::write(const QString &interface, const QString &key, bool value)
{
    // The switch interface declares a number as result and sends a boolean; both are accepted.
    const QVariantList arguments{key, QVariant::fromValue(QDBusVariant(value))};
    const auto reply =
        await(send(interface, SetKeyValue, arguments), {QStringLiteral("b"), QStringLiteral("i")});
    if (!reply)
        return reply.failure();
    return reply->arguments().constFirst().toBool();
}

Failure Daemon::noAnswer() const
{
    return DaemonFailure::noAnswer(std::chrono::duration<double>(m_timeout).count());
}
