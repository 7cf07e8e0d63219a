// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_WATCHER_H
#define GOVCTL_WATCHER_H

#include "govctl/daemon.h"

#include <QDBusMessage>
#include <QDateTime>
#include <QObject>

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
class Watcher : public QObject
{
    Q_OBJECT

public:
    ~Watcher() override;

    /// Finds the daemon and begins to follow it. Nothing is missed that happens after this has
    /// returned.
    std::optional<Failure> start(std::chrono::milliseconds timeout);

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
    void follow(const QString &connection);
    void unfollow();
    void checkNewOwner(const QString &connection);
    void announce(Event::Kind kind, const QDBusMessage &message);

    QString m_owner; // trusted and followed; empty when there is none
    QString m_candidate; // owner of the name, trusted or not
};

#endif
