// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksclient.h"

#include "udiskscall.h"
#include "udisksnames.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QTimer>

namespace UDisks {
namespace {

struct Subscription
{
    QLatin1String path; ///< empty for any
    QLatin1String interface;
    QLatin1String member;
    const char *slot;
};

const Subscription subscriptions[] = {
    {RootPath, ObjectManager, latin1("InterfacesAdded"), SLOT(onInterfacesAdded(QDBusMessage))},
    {RootPath, ObjectManager, latin1("InterfacesRemoved"), SLOT(onInterfacesRemoved(QDBusMessage))},
    {latin1(""), Properties, latin1("PropertiesChanged"), SLOT(onPropertiesChanged(QDBusMessage))},
};

// What is retried by these names; what else is retried is unmounted, and has its object path.
constexpr QLatin1String Listing = latin1("listing");
constexpr QLatin1String Owner = latin1("owner");

/// Milliseconds that partitions() waits for a listing, and after which it does not wait for
/// another.
constexpr int WaitingTime = 5'000;
constexpr int LongAnswer = 1'000;

/// Milliseconds, somewhat less than those after which QtDBus takes a question for unanswered.
constexpr int BusTimeOut = 20'000;

template <typename Value> Value argument(const QDBusMessage &message, int index)
{
    return qdbus_cast<Value>(message.arguments().at(index));
}

QString pathArgument(const QDBusMessage &message)
{
    return argument<QDBusObjectPath>(message, 0).path();
}

} // namespace

Client::Client()
{
    connect(&m_retries, &Retries::due, this, &Client::retry);
}

QVector<Partition> Client::partitions(Partition::StorageTypes types)
{
    if (!QCoreApplication::instance())
        return {};
    connectToBus();
    if (m_last != Good) {
        list();
        if (m_listing && (m_last != Slow || m_listing->isFinished()))
            takeListingNow();
    }
    return m_objects.partitions(types);
}

void Client::connectToBus()
{
    if (m_isConnected)
        return;
    m_isConnected = true;
    QDBusConnection bus = QDBusConnection::systemBus();
    bus.connect(BusService, BusPath, BusService, QStringLiteral("NameOwnerChanged"), {Service},
                QString(), this, SLOT(onOwnerChanged()));
    onOwnerChanged();
}

void Client::onOwnerChanged()
{
    // The arguments of the signal can be outdated, the answer of the bus is not. If the owner
    // changes again, another signal follows.
    QDBusMessage question = QDBusMessage::createMethodCall(BusService, BusPath, BusService,
                                                           QStringLiteral("GetNameOwner"));
    question.setArguments({QString(Service)});
    const QDBusReply<QString> owner = QDBusConnection::systemBus().call(question);
    if (!owner.isValid() && owner.error().name() != NameHasNoOwner) {
        m_retries.takeFailure(Owner);
        return;
    }
    m_retries.end(Owner);
    follow(owner);
}

void Client::follow(const QString &owner)
{
    if (owner == m_owner)
        return;
    m_retries.endAll();
    m_complaints.clear();
    m_unmounting.clear();
    delete m_listing;
    m_listing = nullptr;
    m_last = Unknown;
    m_objects.clear();
    unsubscribe();
    m_owner = owner;
    if (subscribe()) {
        list();
        return;
    }
    unsubscribe();
    m_owner.clear();
    m_retries.takeFailure(Owner);
}

/// Returns false when the bus was silent meanwhile.
bool Client::subscribe()
{
    QElapsedTimer time;
    time.start();
    QDBusConnection bus = QDBusConnection::systemBus();
    for (const Subscription &each : subscriptions) {
        if (!m_owner.isEmpty())
            bus.connect(m_owner, each.path, each.interface, each.member, this, each.slot);
    }
    return !time.hasExpired(BusTimeOut);
}

void Client::unsubscribe()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    for (const Subscription &each : subscriptions) {
        if (!m_owner.isEmpty())
            bus.disconnect(m_owner, each.path, each.interface, each.member, this, each.slot);
    }
}

void Client::list()
{
    if (m_listing || m_owner.isEmpty())
        return;
    m_isSomethingMissing = false;
    const auto take = [this](const QDBusMessage &reply) {
        const bool isTaken = isAhead();
        m_listing = nullptr;
        if (!isTaken)
            takeListing(reply);
    };
    m_sinceQuestion.start();
    // When nobody waits for the answer, it may take longer.
    m_listing = ask(methodCall(RootPath, ObjectManager, QStringLiteral("GetManagedObjects")), take,
                    m_last == Slow ? -1 : WaitingTime);
}

/// Waits for the listing that has been asked for, and takes it ahead of its turn.
void Client::takeListingNow()
{
    // Waiting through the watcher itself would take its turn in the queue away.
    QDBusPendingCallWatcher *watcher = std::exchange(m_listing, nullptr);
    QDBusPendingCall listing = *watcher;
    listing.waitForFinished();
    takeListing(listing.reply());
    if (m_last == Good) {
        m_listing = watcher;
        return;
    }
    delete watcher;
    QTimer::singleShot(0, this, &Client::announceNews);
}

void Client::takeListing(const QDBusMessage &reply)
{
    if (reply.signature() == QLatin1String("a{oa{sa{sv}}}")) {
        m_last = Good;
        m_retries.end(Listing);
        QMap<QString, Interfaces> objects;
        const auto listed = argument<QMap<QDBusObjectPath, Interfaces>>(reply, 0);
        for (auto it = listed.begin(); it != listed.end(); ++it)
            objects.insert(it.key().path(), it.value());
        m_objects.replace(objects);
        return;
    }
    qCDebug(lcSystemSettings, "Cannot list storage: answer of type \"%s\", error \"%s\"",
            qUtf8Printable(reply.signature()), qUtf8Printable(reply.errorName()));
    m_last = m_sinceQuestion.hasExpired(LongAnswer) ? Slow : Bad;
    m_retries.takeFailure(Listing);
    if (m_isSomethingMissing)
        list();
}

/// Without a good listing, the service may have more objects than the one just heard of.
void Client::listAgain()
{
    m_isSomethingMissing = true;
    if (m_last != Good)
        list();
}

void Client::retry(const QString &name, bool onceMore)
{
    if (name == Listing)
        list();
    else if (name == Owner)
        onOwnerChanged();
    else
        remind(name, onceMore);
}

/// Whether the listing has been read ahead of its turn, so that signals are older.
bool Client::isAhead() const
{
    return m_listing && m_last == Good;
}

void Client::onInterfacesAdded(const QDBusMessage &message)
{
    if (isAhead() || message.signature() != QLatin1String("oa{sa{sv}}"))
        return;
    const QString path = pathArgument(message);
    const bool wasKnown = m_objects.knows(path);
    m_objects.add(path, argument<Interfaces>(message, 1));
    if (!wasKnown && m_objects.knows(path))
        listAgain();
    endIfUnmounted(path);
    announceNews();
}

void Client::onInterfacesRemoved(const QDBusMessage &message)
{
    if (isAhead() || message.signature() != QLatin1String("oas"))
        return;
    const QString path = pathArgument(message);
    m_objects.remove(path, argument<QStringList>(message, 1));
    m_unmounting.remove(path); // what comes in its place is announced
    endIfUnmounted(path);
    announceNews(); // a drive that comes back must find its storage without a kind
}

void Client::onPropertiesChanged(const QDBusMessage &message)
{
    if (isAhead() || message.signature() != QLatin1String("sa{sv}as"))
        return;
    const QString interface = argument<QString>(message, 0);
    if (isWanted(interface) && !m_objects.has(message.path(), interface))
        listAgain();
    m_objects.change(message.path(), interface, argument<QVariantMap>(message, 1));
    endIfUnmounted(message.path());
    announceNews();
    const auto invalidated = argument<QStringList>(message, 2);
    for (const QString &property : invalidated) {
        if (m_objects.has(message.path(), interface) && isWanted(interface, property))
            fetch(message.path(), interface, property);
    }
}

void Client::fetch(const QString &path, const QString &interface, const QString &property)
{
    ask(methodCall(path, Properties, QStringLiteral("Get"), {interface, property}),
        [=](const QDBusMessage &reply) {
            if (isAhead() || !m_objects.has(path, interface))
                return;
            if (reply.signature() == QLatin1String("v")) {
                const QVariant value = argument<QDBusVariant>(reply, 0).variant();
                m_objects.change(path, interface, {{property, value}});
                endIfUnmounted(path);
                return;
            }
            if (m_last == Good)
                m_last = Bad; // the last listing is outdated, and no signal brings the value
            m_retries.takeFailure(Listing);
        });
}

void Client::announceNews()
{
    // What comes and goes before the first listing is no news: the listing has what is left.
    if (m_last == Unknown)
        return;
    const QVector<Partition> news = m_objects.takeNews();
    for (const Partition &partition : news) {
        // When an unmount is under way, its answer decides whether to announce the partition.
        if (!m_unmounting.contains(partition.objectPath()))
            Q_EMIT partitionAdded(partition);
    }
}

QDBusPendingCallWatcher *Client::ask(const QDBusMessage &question, const Taker &take, int timeout)
{
    auto *watcher = new QDBusPendingCallWatcher(
        QDBusConnection::systemBus().asyncCall(question, timeout), this);
    if (watcher->isFinished()) {
        // A reply that was there before its watcher has lost its place among the signals. Taken
        // before all of them, it loses none: older ones repeat what it knows, and at worst
        // something is announced twice.
        take(watcher->reply());
        delete watcher;
        QTimer::singleShot(0, this, &Client::announceNews);
        return nullptr;
    }
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
        watcher->deleteLater();
        take(watcher->reply());
        announceNews();
    });
    return watcher;
}

} // namespace UDisks
