// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSCLIENT_H
#define SYSTEMSETTINGS_UDISKSCLIENT_H

#include "udisksobjects.h"

#include <QDBusMessage>
#include <QObject>

#include <functional>

class QDBusPendingCallWatcher;

namespace UDisks {

/// Follows the storage service on the system bus.
///
/// One listing of all objects, then signals. Order: the reply of an asynchronous call and the
/// signals of one connection reach this object through the event queue of its thread in the
/// order in which they came from the bus. So a signal that is delivered before the listing's
/// reply is older than the listing and is ignored; each later one is newer and is applied. Who
/// asks before the reply has come through the queue reads it ahead of its turn, which changes
/// nothing of that order.
///
/// Signals are taken from the unique name of the service only, so nobody else can make them up.
/// The well-known name would do, but for QtDBus: it follows the owner of such a name by itself
/// and, when that changes while somebody subscribes, can get stuck with the wrong one.
class Client : public QObject
{
    Q_OBJECT

public:
    /// The bus is first used when the event loop starts, or when partitions are asked for; so a
    /// client may be built before the application object.
    explicit Client(QObject *parent = nullptr);

    /// Returns the partitions whose storage type is among @p types. Waits for the listing, if one
    /// is under way. Empty while the service is absent or there is no application object.
    QVector<Partition> partitions(Partition::StorageTypes types);

    /// Asks the service to unmount the file system of the object at @p path. Only a debug line
    /// tells of a failure.
    void unmount(const QString &path, const QVariantMap &options);

Q_SIGNALS:
    /// A partition is new, or newly mounted.
    void partitionAdded(const Partition &partition);

protected:
    void customEvent(QEvent *event) override;

private Q_SLOTS:
    void onOwnerChanged();
    void onInterfacesAdded(const QDBusMessage &message);
    void onInterfacesRemoved(const QDBusMessage &message);
    void onPropertiesChanged(const QDBusMessage &message);

private:
    using Taker = std::function<void(const QDBusMessage &reply)>;

    void connectToBus();
    void follow(const QString &owner);
    void subscribe(bool isOn);
    void list();
    void takeListing(const QDBusMessage &reply);
    void fetch(const QString &path, const QString &interface, const QString &property);
    void announceNews();

    /// Lets @p take have the reply in its turn, and returns what waits for it; nothing when it
    /// was taken at once.
    QDBusPendingCallWatcher *ask(const QDBusMessage &question, const Taker &take);

    QString m_owner; ///< unique bus name of the service; empty while it is absent
    Objects m_objects;
    QDBusPendingCallWatcher *m_listing = nullptr; ///< until its turn in the event queue
    bool m_isListingTaken = false;
    bool m_isConnected = false;
};

} // namespace UDisks

#endif
