// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "watcher.h"

#include "daemonfailure.h"
#include "names.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace {

const QLatin1String PolicyChanged("PolicyChanged");
const QLatin1String SwitchChanged("SwitchChanged");

} // namespace

QString Event::kindName() const
{
    switch (kind) {
    case Kind::Policy:
        return QStringLiteral("policy");
    case Kind::Switch:
        return QStringLiteral("switch");
    case Kind::Service:
        return QStringLiteral("service");
    }
    Q_UNREACHABLE();
}

Watcher::~Watcher()
{
    if (!m_isSubscribed)
        return;
    unsubscribe();
    Daemon::settle(QDBusConnection::systemBus());
}

Outcome Watcher::start(std::chrono::milliseconds timeout, bool mayBeAbsent)
{
    const auto isNoFault = [mayBeAbsent](const Result<Daemon::Owner> &owner) {
        return owner || (mayBeAbsent && owner.failure().name == QLatin1String("no-service"));
    };
    Daemon daemon(timeout);
    if (const Result<Daemon::Owner> owner = daemon.open(); !isNoFault(owner))
        return owner.failure();
    subscribe();

    // The bus handles the subscriptions before this call. A change of the owner before that was not
    // announced to this process, so the owner is read again.
    const Result<Daemon::Owner> owner = daemon.open();
    if (!owner)
        return isNoFault(owner) ? std::nullopt : Outcome(owner.failure());
    trust(owner->connection);
    // A daemon that hangs announces nothing; this call makes that a failure.
    if (const Result<Daemon::Reading> answer = daemon.read({}); !answer)
        return answer.failure();
    return std::nullopt;
}

void Watcher::onPolicyChanged(const QDBusMessage &message)
{
    announce(Event::Kind::Policy, message);
}

void Watcher::onSwitchChanged(const QDBusMessage &message)
{
    announce(Event::Kind::Switch, message);
}

void Watcher::onOwnerChanged(const QString &name, const QString &, const QString &now)
{
    if (m_isTrusted)
        Q_EMIT happened({Event::Kind::Service, name, false, QDateTime::currentDateTime()});
    m_owner = now;
    m_isTrusted = false;
    m_held.clear();
    if (!now.isEmpty())
        checkNewOwner(now);
}

/// Subscribes by the well-known name, so that the bus passes on the first signal of a new owner.
void Watcher::subscribe()
{
    m_isSubscribed = true;
    QDBusConnection bus = QDBusConnection::systemBus();
    auto *names = new QDBusServiceWatcher(Names::Service, bus,
                                          QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(names, &QDBusServiceWatcher::serviceOwnerChanged, this, &Watcher::onOwnerChanged);
    bus.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SIGNAL(disconnected()));
    bus.connect(Names::Service, Names::ObjectPath, Daemon::PolicyInterface, PolicyChanged, this,
                SLOT(onPolicyChanged(QDBusMessage)));
    bus.connect(Names::Service, Names::ObjectPath, Daemon::SwitchInterface, SwitchChanged, this,
                SLOT(onSwitchChanged(QDBusMessage)));
}

void Watcher::unsubscribe()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    bus.disconnect(Names::Service, Names::ObjectPath, Daemon::PolicyInterface, PolicyChanged, this,
                   SLOT(onPolicyChanged(QDBusMessage)));
    bus.disconnect(Names::Service, Names::ObjectPath, Daemon::SwitchInterface, SwitchChanged, this,
                   SLOT(onSwitchChanged(QDBusMessage)));
}

/// Accepts the signals of @p connection, which belongs to root.
void Watcher::trust(const QString &connection)
{
    if (connection != m_owner)
        m_held.clear();
    m_owner = connection;
    m_isTrusted = true;
    const QVector<Event> held = std::exchange(m_held, {});
    for (const Event &event : held)
        Q_EMIT happened(event);
}

void Watcher::checkNewOwner(const QString &connection)
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        Names::BusDaemon.service, Names::BusDaemon.path, Names::BusDaemon.interface,
        QStringLiteral("GetConnectionUnixUser"));
    question << connection;
    auto *answer =
        new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, connection] {
        answer->deleteLater();
        const QDBusPendingReply<uint> user = *answer;
        // An error means that the new owner has left the bus.
        if (user.isError() || connection != m_owner)
            return;
        if (user.value() != 0) {
            m_owner.clear();
            m_held.clear();
            Q_EMIT distrusted(user.value());
            return;
        }
        Q_EMIT happened({Event::Kind::Service, Names::Service, true, QDateTime::currentDateTime()});
        trust(connection);
    });
}

void Watcher::announce(Event::Kind kind, const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    // Signals that are sent to this process directly arrive without a subscription.
    if (message.service() != m_owner || message.signature() != QLatin1String("sv"))
        return;
    const Event event{kind, arguments[0].toString(),
                      arguments[1].value<QDBusVariant>().variant().toBool(),
                      QDateTime::currentDateTime()};
    if (m_isTrusted)
        Q_EMIT happened(event);
    else
        m_held.append(event);
}
