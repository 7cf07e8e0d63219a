// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSCLIENT_H
#define SYSTEMSETTINGS_UDISKSCLIENT_H

#include "udisksobjects.h"

#include <QDBusError>
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
/// reply is older than the listing, and each later one is newer; taken in this order, all come to
/// the same end. Who asks before the reply has come through the queue reads it ahead of its turn,
/// and the signals that are left until then are ignored.
///
/// A listing can fail. What signals tell counts all the same, and there is another one as soon as
/// there is reason to believe that something has been missed.
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

    /// Returns the partitions whose storage type is among @p types. Waits for one listing while
    /// there is no good one. Empty while the service is absent or there is no application object.
    QVector<Partition> partitions(Partition::StorageTypes types);

    /// Asks the service to unmount the file system of @p partition. A failure is logged, the first
    /// one since it was unmounted as a warning.
    void unmount(const Partition &partition, const QVariantMap &options);

Q_SIGNALS:
    /// A partition is new, newly mounted, or still mounted after it was to be unmounted.
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
    void waitForListing();
    void takeListing(const QDBusMessage &reply);
    void listAgain();
    bool isAhead() const;
    void noteMounts(const QString &path);
    void takeUnmount(const Partition &partition, const QDBusError &error);
    void remind(const QString &path, bool &isMounted);
    void fetch(const QString &path, const QString &interface, const QString &property);
    void announceNews();

    /// Lets @p take have the reply in its turn, and returns what waits for it; nothing when it
    /// was taken at once.
    QDBusPendingCallWatcher *ask(const QDBusMessage &question, const Taker &take);

    QString m_owner; ///< unique bus name of the service; empty while it is absent
    Objects m_objects;
    QDBusPendingCallWatcher *m_listing = nullptr; ///< until its turn in the event queue
    enum { Unknown, Bad, Good } m_last = Unknown; ///< how the last listing ended
    bool m_isSomethingMissing = false; ///< since the last listing was asked for
    bool m_isConnected = false;
};

} // namespace UDisks

#endif
