// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_WATCHER_H
#define GOVCTL_WATCHER_H

#include "govctl/daemon.h"

#include <QDBusMessage>
#include <QDateTime>
#include <QObject>
#include <QVector>

/// One thing that happened.
struct Event
{
    enum class Kind { Policy, Switch, Service };

    Kind kind;
    QString key; ///< of the policy or switch; the bus name for the service
    bool value; ///< for the service: whether it is there
    QDateTime time;

    QString kindName() const;
};

/// Follows what the daemon announces, across restarts of the daemon.
///
/// Heeds only signals of the connection that owns the daemon's name, and only while that is root's.
/// What a new owner announces before it is known to be root waits until it is.
class Watcher : public QObject
{
    Q_OBJECT

public:
    ~Watcher() override;

    /// Finds the daemon, begins to follow it, and makes sure that it answers. Nothing is missed
    /// that happens after this has returned. That there is no daemon yet is no failure when
    /// @p mayBeAbsent is true.
    Outcome start(std::chrono::milliseconds timeout, bool mayBeAbsent);

Q_SIGNALS:
    void happened(const Event &event);

    /// The name is owned by @p user, who is not root: nothing is heeded until that ends.
    void distrusted(uint user);

    /// The connection to the bus is lost, and with it everything else.
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
    QVector<Event> m_held; // what the owner announced before that was known
};

#endif
