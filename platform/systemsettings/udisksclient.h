// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSCLIENT_H
#define SYSTEMSETTINGS_UDISKSCLIENT_H

#include "udisksobjects.h"
#include "udisksretries.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QObject>
#include <QSet>

#include <functional>

class QDBusPendingCallWatcher;

namespace UDisks {

/// Follows the storage service on the system bus, for all partition managers of the process. So
/// they know the same: what one has missed, no other counts as announced.
///
/// The client asks for one listing of all objects and follows the signals after it. The reply of an
/// asynchronous call and the signals of one connection reach this object through the event queue of
/// its thread, in the order in which they came from the bus. So a signal that is delivered before
/// the listing's reply is older than the listing, and each later one is newer. A caller of
/// partitions() who cannot wait for the event loop reads the reply ahead of its turn, and the
/// signals that are delivered until its turn are ignored.
///
/// When a listing fails, the client asks for another one by a timer and at the next occasion: a
/// call of partitions(), or a signal that names something unknown. Until then it goes by signals.
///
/// The client takes signals from the unique name of the service only, so no other program can fake
/// them. It does not subscribe by the well-known name, because QtDBus follows the owner of such a
/// name by itself and can keep a wrong one when that changes during the subscription. QtDBus asks
/// the bus for the owner of a unique name, too; without an answer it drops all signals from there.
class Client : public QObject
{
    Q_OBJECT

public:
    Client();

    /// Begins to use the bus. Needs an application object.
    void connectToBus();

    /// Returns the partitions whose storage type is among @p types. Waits for a listing while
    /// there is no good one, up to five seconds, unless the last failure took longer than one.
    /// Empty while the service is absent or there is no application object.
    QVector<Partition> partitions(Partition::StorageTypes types);

    /// Returns the partitions that partitionAdded() has announced and that are still there.
    QVector<Partition> announced() const { return m_objects.announced(); }

    /// Asks the service to unmount the file system of @p partition. A failure is logged, the first
    /// one since it was unmounted, or the service changed, as a warning.
    void unmount(const Partition &partition, const QVariantMap &options);

Q_SIGNALS:
    /// A partition is new, newly mounted, mounted with another drive or type than before, or still
    /// mounted after it was to be unmounted.
    void partitionAdded(const Partition &partition);

private Q_SLOTS:
    void onOwnerChanged();
    void onInterfacesAdded(const QDBusMessage &message);
    void onInterfacesRemoved(const QDBusMessage &message);
    void onPropertiesChanged(const QDBusMessage &message);

private:
    using Taker = std::function<void(const QDBusMessage &reply)>;

    void follow(const QString &owner);
    bool subscribe();
    void unsubscribe();
    void list();
    void takeListingNow();
    void takeListing(const QDBusMessage &reply);
    void listAgain();
    bool isAhead() const;
    void takeUnmount(const Partition &partition, const QStringList &before,
                     const QDBusError &error);
    void remind(const QString &path, bool onceMore);
    void announceAgain(const QString &path);
    void endIfUnmounted(const QString &path);
    void complain(const Partition &partition, const QString &reason);
    void fetch(const QString &path, const QString &interface, const QString &property);
    void retry(const QString &name, bool onceMore);
    void announceNews();

    /// Lets @p take have the reply in its turn, and returns what waits for it; nothing when it
    /// was taken at once. Waits as long as the bus library does by default with a @p timeout of -1.
    QDBusPendingCallWatcher *ask(const QDBusMessage &question, const Taker &take, int timeout = -1);

    QString m_owner; ///< unique bus name of the service; empty while it is absent
    Objects m_objects;
    Retries m_retries; ///< of unmounting, by object path; of a listing; of a look for the owner
    QHash<QString, int> m_unmounting; ///< calls that have no answer yet, by object path
    QSet<QString> m_complaints; ///< object paths of which a failure has been logged as a warning
    QDBusPendingCallWatcher *m_listing = nullptr; ///< until its turn in the event queue
    QElapsedTimer m_sinceQuestion; ///< since the last listing was asked for
    /// How the last listing ended: Slow, when it failed and nobody should wait for the next one.
    enum { Unknown, Bad, Slow, Good } m_last = Unknown;
    bool m_isSomethingMissing = false; ///< since the last listing was asked for
    bool m_isConnected = false;
};

} // namespace UDisks

#endif
