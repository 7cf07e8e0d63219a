// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_WATCHER_H
#define GOVCTL_WATCHER_H

#include "daemon.h"

#include <QDBusMessage>
#include <QDateTime>
#include <QObject>
#include <QVector>

/// One announcement of the daemon, or its coming or going.
struct Event
{
    enum class Kind { Policy, Switch, Service };

    Kind kind;
    QString key; ///< of the policy or switch; the bus name for the service
    bool value; ///< for the service: whether it is on the bus
    QDateTime time;

    QString kindName() const;
};

/// Follows what the daemon announces, across restarts of the daemon.
///
/// Accepts only signals of the connection that owns the daemon's name, and only while that belongs
/// to root. Signals of a new owner are held until the bus has told its user.
class Watcher : public QObject
{
    Q_OBJECT

public:
    ~Watcher() override;

    /// Finds the daemon, subscribes to its signals, and checks that it answers. No signal after the
    /// return is missed. A missing daemon is no failure when @p mayBeAbsent is true.
    Outcome start(std::chrono::milliseconds timeout, bool mayBeAbsent);

Q_SIGNALS:
    void happened(const Event &event);

    /// The name is owned by @p user, who is not root: signals are dropped until the owner changes.
    void distrusted(uint user);

    /// The connection to the bus is lost; no further event comes.
    void disconnected();

private Q_SLOTS:
    void onPolicyChanged(const QDBusMessage &message);
    void onSwitchChanged(const QDBusMessage &message);
    void onOwnerChanged(const QString &name, const QString &before, const QString &now);

private:
    void subscribe();
    void unsubscribe();
    void trust(const QString &connection);
    void checkNewOwner(const QString &connection);
    void announce(Event::Kind kind, const QDBusMessage &message);

    bool m_isSubscribed = false;
    QString m_owner; // of the name; empty when there is none, or one that is not root
    bool m_isTrusted = false; // the owner is known to be root
    QVector<Event> m_held; // signals of an owner whose user is not yet known
};

#endif
