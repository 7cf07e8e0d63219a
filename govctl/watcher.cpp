// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/watcher.h"

#include "common/names.h"
#include "govctl/daemonfailure.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace {

const QString PolicyChanged = QStringLiteral("PolicyChanged");
const QString SwitchChanged = QStringLiteral("SwitchChanged");

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
    if (m_owner.isEmpty())
        return;
    unfollow();
    Daemon::settle(QDBusConnection::systemBus());
}

std::optional<Failure> Watcher::start(std::chrono::milliseconds timeout)
{
    Daemon daemon(timeout);
    const Result<Daemon::Owner> owner = daemon.open();
    if (!owner)
        return owner.failure();

    QDBusConnection bus = QDBusConnection::systemBus();
    auto *names = new QDBusServiceWatcher(Names::Service, bus,
                                          QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(names, &QDBusServiceWatcher::serviceOwnerChanged, this, &Watcher::onOwnerChanged);
    bus.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SIGNAL(disconnected()));
    follow(owner->connection);

    // The bus answers after it has taken in all of the above. An owner that left in between was
    // not announced to us.
    const Result<Daemon::Owner> still = daemon.open();
    if (!still)
        return still.failure();
    follow(still->connection);
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
    if (!m_owner.isEmpty())
        Q_EMIT happened({Event::Kind::Service, name, false, QDateTime::currentDateTime()});
    unfollow();
    m_candidate = now;
    if (!now.isEmpty())
        checkNewOwner(now);
}

void Watcher::follow(const QString &connection)
{
    if (connection == m_owner)
        return;
    unfollow();
    QDBusConnection bus = QDBusConnection::systemBus();
    m_owner = connection;
    m_candidate = connection;
    bus.connect(connection, Names::ObjectPath, Daemon::PolicyInterface, PolicyChanged, this,
                SLOT(onPolicyChanged(QDBusMessage)));
    bus.connect(connection, Names::ObjectPath, Daemon::SwitchInterface, SwitchChanged, this,
                SLOT(onSwitchChanged(QDBusMessage)));
}

void Watcher::unfollow()
{
    if (m_owner.isEmpty())
        return;
    QDBusConnection bus = QDBusConnection::systemBus();
    bus.disconnect(m_owner, Names::ObjectPath, Daemon::PolicyInterface, PolicyChanged, this,
                   SLOT(onPolicyChanged(QDBusMessage)));
    bus.disconnect(m_owner, Names::ObjectPath, Daemon::SwitchInterface, SwitchChanged, this,
                   SLOT(onSwitchChanged(QDBusMessage)));
    m_owner.clear();
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
        // An error means that it has gone again.
        if (user.isError() || connection != m_candidate)
            return;
        if (user.value() != 0) {
            Q_EMIT distrusted(user.value());
            return;
        }
        follow(connection);
        Q_EMIT happened({Event::Kind::Service, Names::Service, true, QDateTime::currentDateTime()});
    });
}

void Watcher::announce(Event::Kind kind, const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    // A signal that somebody sent to this process alone needs no subscription to arrive.
    if (message.service() != m_owner || message.signature() != QLatin1String("sv"))
        return;
    Q_EMIT happened({kind, arguments[0].toString(),
                     arguments[1].value<QDBusVariant>().variant().toBool(),
                     QDateTime::currentDateTime()});
}
