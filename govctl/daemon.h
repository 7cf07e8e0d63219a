// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DAEMON_H
#define GOVCTL_DAEMON_H

#include "govctl/result.h"
#include "names.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDeadlineTimer>
#include <QList>
#include <QVariantList>
#include <QVector>

#include <chrono>
#include <functional>
#include <optional>

/// The daemon, as its bus interfaces show it.
///
/// One deadline, which starts with the object, covers everything that is asked of it. Calls go to
/// the connection that owns the daemon's name, so nobody else can answer them, and only if that
/// connection belongs to root. Methods wait in an event loop of their own. Main thread only.
class Daemon
{
    Q_DISABLE_COPY(Daemon)

public:
    /// Who has the daemon's name on the bus.
    struct Owner
    {
        QString connection; ///< unique name on the bus
        uint user = 0;
    };

    /// An access switch.
    struct Switch
    {
        QString key;
        bool value = false;
        QList<int> types; ///< numbers of the policies it governs
    };

    /// What one question about policies gives.
    struct Reading
    {
        /// One for each key that was asked for; nothing for a policy that has no value.
        QVector<std::optional<bool>> values;
        QStringList switchKeys;
    };

    /// @p onWait is called once when an answer has been waited for longer than a person expects.
    explicit Daemon(std::chrono::milliseconds timeout, std::function<void()> onWait = {});
    ~Daemon();

    /// Waits, for a second at most, until the thread of the bus library has done all that it was
    /// given so far. That thread runs to the very end of the process, and what it did then would
    /// find half of the process gone.
    static void settle(const QDBusConnection &bus);

    /// Connects to the system bus and finds the owner of the name, whoever it is.
    Result<Owner> findOwner();

    /// Connects to the system bus and to the daemon. To be called before everything below; fails
    /// when the name has no owner, or one that is not root.
    Result<Owner> open();

    /// Reads the policies @p keys and the list of switches.
    Result<Reading> read(const QStringList &keys);

    /// Reads the switches @p keys.
    Result<QVector<Switch>> readSwitches(const QStringList &keys);

    /// Asks for a new value. False when the daemon refuses it without an error.
    Result<bool> setPolicy(const QString &key, bool value);
    Result<bool> setSwitch(const QString &key, bool value);

    /// Asks another service, and waits for two seconds at most. The reply can be an error, or no
    /// message at all.
    QDBusMessage ask(const Names::RemoteObject &object, const QString &method,
                     const QVariantList &arguments) const;

    /// Has the running daemon enforce all policies once more. Root can do that alone.
    Outcome reload();

    /// Whether the bus passes on what this process writes, found out without writing.
    Result<bool> busPassesWrites();

    /// The interfaces of the daemon's object.
    static const QLatin1String PolicyInterface;
    static const QLatin1String SwitchInterface;

private:
    Outcome connectToBus();
    Result<QVariant> askBus(const QString &method, const QString &argument);
    QDBusPendingCall send(const QString &interface, const QString &method,
                          const QVariantList &arguments) const;
    QDBusPendingCall dispatch(QDBusMessage message) const;
    void waitFor(const QDBusPendingCall &call, QDeadlineTimer deadline) const;
    Result<QDBusMessage> await(const QDBusPendingCall &call, const QStringList &signatures) const;
    Result<bool> write(const QString &interface, const QString &key, bool value);
    Failure noAnswer() const;

    std::chrono::milliseconds m_timeout;
    QDeadlineTimer m_deadline;
    mutable std::function<void()> m_onWait; // empty once it was called
    QDBusConnection m_bus;
    Owner m_owner;
};

#endif
