// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_DAEMON_H
#define GOVCTL_DAEMON_H

#include "names.h"
#include "result.h"

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
/// One deadline, which starts with the object, covers all its calls. Calls go to the unique name of
/// the connection that owns the daemon's name, so that no other process can answer them, and only
/// if that connection belongs to root. Methods wait in an event loop of their own. To be used in
/// the main thread only.
class Daemon
{
    Q_DISABLE_COPY(Daemon)

public:
    /// The owner of the daemon's name on the bus.
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

    /// The replies of one read().
    struct Reading
    {
        /// The effective value of each key that was asked for; empty where there is none.
        QVector<std::optional<bool>> values;
        QStringList switchKeys;
    };

    /// @p onWait is called once, when a reply takes longer than two seconds.
    explicit Daemon(std::chrono::milliseconds timeout, std::function<void()> onWait = {});
    ~Daemon();

    /// Waits, for a second at most, until the bus library's thread has done all its queued work.
    /// That thread runs until the process ends; work left then would use objects already destroyed.
    static void settle(const QDBusConnection &bus);

    /// Connects to the system bus and finds the owner of the name, of whichever user.
    Result<Owner> findOwner();

    /// Connects to the system bus and finds the daemon. Call it before the functions below. Fails
    /// when the name has no owner, or one that is not root.
    Result<Owner> open();

    /// Lets the time limit of all following calls begin now.
    void restartDeadline();

    /// Reads the policies @p keys and the list of switches.
    Result<Reading> read(const QStringList &keys);

    /// Reads the switches @p keys.
    Result<QVector<Switch>> readSwitches(const QStringList &keys);

    /// Writes a policy or a switch. False when the daemon refuses the value without an error.
    Result<bool> setPolicy(const QString &key, bool value);
    Result<bool> setSwitch(const QString &key, bool value);

    /// Calls another service, and waits for two seconds at most. The result can be an error reply,
    /// or an invalid message when no reply came.
    QDBusMessage ask(const Names::RemoteObject &object, const QString &method,
                     const QVariantList &arguments) const;

    /// Has the running daemon enforce all policies again, by SIGHUP; only root may send it.
    Outcome reload();

    /// Whether the bus policy lets this process write; found out without writing.
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
