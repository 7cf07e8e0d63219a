// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksclient.h"

#include "udiskscall.h"
#include "udisksnames.h"
#include "udisksreminders.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QEvent>

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

template <typename Value> Value argument(const QDBusMessage &message, int index)
{
    return qdbus_cast<Value>(message.arguments().at(index));
}

QString pathArgument(const QDBusMessage &message)
{
    return argument<QDBusObjectPath>(message, 0).path();
}

} // namespace

Client::Client(QObject *parent)
    : QObject(parent)
{
    // An event waits in the thread's queue even when there is no application object yet. It is of a
    // kind of its own, because an application may deliver queued calls before its event loop runs.
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    connect(&Reminders::instance(), &Reminders::due, this, &Client::remind);
}

void Client::customEvent(QEvent *)
{
    connectToBus();
}

QVector<Partition> Client::partitions(Partition::StorageTypes types)
{
    if (!QCoreApplication::instance())
        return {};
    connectToBus();
    if (m_last != Good) {
        list();
        waitForListing();
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
    // What the signal tells can be outdated; what the bus answers now is not, and another signal
    // follows if it changes again.
    QDBusMessage question = QDBusMessage::createMethodCall(BusService, BusPath, BusService,
                                                           QStringLiteral("GetNameOwner"));
    question.setArguments({QString(Service)});
    follow(QDBusReply<QString>(QDBusConnection::systemBus().call(question)));
}

void Client::follow(const QString &owner)
{
    if (owner == m_owner)
        return;
    if (!m_owner.isEmpty())
        Reminders::instance().endAll();
    delete m_listing;
    m_listing = nullptr;
    m_last = Unknown;
    m_objects.clear();
    subscribe(false);
    m_owner = owner;
    subscribe(true);
    list();
}

void Client::subscribe(bool isOn)
{
    if (m_owner.isEmpty())
        return;
    QDBusConnection bus = QDBusConnection::systemBus();
    for (const Subscription &each : subscriptions) {
        if (isOn)
            bus.connect(m_owner, each.path, each.interface, each.member, this, each.slot);
        else
            bus.disconnect(m_owner, each.path, each.interface, each.member, this, each.slot);
    }
}

void Client::list()
{
    if (m_listing || m_owner.isEmpty())
        return;
    m_isSomethingMissing = false;
    m_listing = ask(methodCall(RootPath, ObjectManager, QStringLiteral("GetManagedObjects")),
                    [this](const QDBusMessage &reply) {
                        const bool isTaken = isAhead();
                        m_listing = nullptr;
                        if (!isTaken)
                            takeListing(reply);
                    });
}

void Client::waitForListing()
{
    if (!m_listing)
        return;
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
    QMetaObject::invokeMethod(this, &Client::announceNews, Qt::QueuedConnection);
}

void Client::takeListing(const QDBusMessage &reply)
{
    if (reply.signature() != QLatin1String("a{oa{sa{sv}}}")) {
        m_last = Bad;
        qCDebug(lcSystemSettings, "Cannot list storage: answer of type \"%s\", error \"%s\"",
                qUtf8Printable(reply.signature()), qUtf8Printable(reply.errorName()));
        if (m_isSomethingMissing)
            list();
        return;
    }
    m_last = Good;
    const auto objects = argument<QMap<QDBusObjectPath, Interfaces>>(reply, 0);
    for (auto it = objects.begin(); it != objects.end(); ++it)
        m_objects.add(it.key().path(), it.value());
}

/// Without a good listing, there may be more of what has just been heard of for the first time.
void Client::listAgain()
{
    m_isSomethingMissing = true;
    if (m_last == Bad)
        list();
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
    noteMounts(path);
    announceNews();
}

void Client::onInterfacesRemoved(const QDBusMessage &message)
{
    if (isAhead() || message.signature() != QLatin1String("oas"))
        return;
    const QStringList interfaces = argument<QStringList>(message, 1);
    m_objects.remove(pathArgument(message), interfaces);
    if (interfaces.contains(Filesystem))
        Reminders::instance().end(pathArgument(message));
}

void Client::onPropertiesChanged(const QDBusMessage &message)
{
    if (isAhead() || message.signature() != QLatin1String("sa{sv}as"))
        return;
    const QString interface = argument<QString>(message, 0);
    if (isWanted(interface) && !m_objects.has(message.path(), interface))
        listAgain();
    m_objects.change(message.path(), interface, argument<QVariantMap>(message, 1));
    noteMounts(message.path());
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
            if (isAhead() || reply.signature() != QLatin1String("v"))
                return;
            const QVariant value = argument<QDBusVariant>(reply, 0).variant();
            m_objects.change(path, interface, {{property, value}});
            noteMounts(path);
        });
}

/// What comes and goes before the first listing is no news: the listing tells what is left.
void Client::announceNews()
{
    if (m_last == Unknown)
        return;
    const QVector<Partition> news = m_objects.takeNews();
    for (const Partition &partition : news)
        Q_EMIT partitionAdded(partition);
}

QDBusPendingCallWatcher *Client::ask(const QDBusMessage &question, const Taker &take)
{
    auto *watcher =
        new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(question), this);
    if (watcher->isFinished()) {
        // A reply that was there before its watcher has lost its place among the signals. Taken
        // before all of them, it loses none: older ones repeat what it knows, and at worst
        // something is announced twice.
        take(watcher->reply());
        delete watcher;
        QMetaObject::invokeMethod(this, &Client::announceNews, Qt::QueuedConnection);
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
