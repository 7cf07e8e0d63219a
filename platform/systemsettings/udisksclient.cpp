// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksclient.h"

#include "udisksnames.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QEvent>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcSystemSettings, "systemsettings", QtInfoMsg)

namespace UDisks {
namespace {

QDBusMessage methodCall(const QString &path, const QString &interface, const QString &method,
                        const QVariantList &arguments = {})
{
    QDBusMessage call = QDBusMessage::createMethodCall(Service, path, interface, method);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    return call;
}

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
    if (m_listing && !m_isListingTaken) {
        // Waiting through the watcher itself would take its turn in the queue away.
        QDBusPendingCall listing = *m_listing;
        listing.waitForFinished();
        takeListing(listing.reply());
    }
    return m_objects.partitions(types);
}

void Client::unmount(const QString &path, const QVariantMap &options)
{
    if (!QCoreApplication::instance())
        return;
    const QDBusMessage call =
        methodCall(path, Filesystem, QStringLiteral("Unmount"), {QVariant(options)});
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, path] {
        if (watcher->isError())
            qCDebug(lcSystemSettings, "Cannot unmount %s: %s", qUtf8Printable(path),
                    qUtf8Printable(watcher->error().name()));
        watcher->deleteLater();
    });
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
    delete m_listing;
    m_listing = nullptr;
    m_objects.clear();
    subscribe(false);
    m_owner = owner;
    subscribe(true);
    if (!m_owner.isEmpty())
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
    m_isListingTaken = false;
    m_listing = ask(methodCall(RootPath, ObjectManager, QStringLiteral("GetManagedObjects")),
                    [this](const QDBusMessage &reply) {
                        m_listing = nullptr;
                        if (!m_isListingTaken)
                            takeListing(reply);
                    });
}

void Client::takeListing(const QDBusMessage &reply)
{
    m_isListingTaken = true;
    if (reply.signature() != QLatin1String("a{oa{sa{sv}}}")) {
        qCDebug(lcSystemSettings, "Cannot list storage: answer of type \"%s\", error \"%s\"",
                qUtf8Printable(reply.signature()), qUtf8Printable(reply.errorName()));
        return;
    }
    const auto objects = argument<QMap<QDBusObjectPath, Interfaces>>(reply, 0);
    for (auto it = objects.begin(); it != objects.end(); ++it)
        m_objects.add(it.key().path(), it.value());
}

void Client::onInterfacesAdded(const QDBusMessage &message)
{
    if (m_listing || message.signature() != QLatin1String("oa{sa{sv}}"))
        return;
    m_objects.add(pathArgument(message), argument<Interfaces>(message, 1));
    announceNews();
}

void Client::onInterfacesRemoved(const QDBusMessage &message)
{
    if (m_listing || message.signature() != QLatin1String("oas"))
        return;
    m_objects.remove(pathArgument(message), argument<QStringList>(message, 1));
}

void Client::onPropertiesChanged(const QDBusMessage &message)
{
    if (m_listing || message.signature() != QLatin1String("sa{sv}as"))
        return;
    const QString interface = argument<QString>(message, 0);
    m_objects.change(message.path(), interface, argument<QVariantMap>(message, 1));
    announceNews();
    for (const QString &property : argument<QStringList>(message, 2)) {
        if (m_objects.has(message.path(), interface) && isWanted(interface, property))
            fetch(message.path(), interface, property);
    }
}

void Client::fetch(const QString &path, const QString &interface, const QString &property)
{
    ask(methodCall(path, Properties, QStringLiteral("Get"), {interface, property}),
        [=](const QDBusMessage &reply) {
            if (m_listing || reply.signature() != QLatin1String("v"))
                return;
            const QVariant value = argument<QDBusVariant>(reply, 0).variant();
            m_objects.change(path, interface, {{property, value}});
        });
}

void Client::announceNews()
{
    for (const Partition &partition : m_objects.takeNews())
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
