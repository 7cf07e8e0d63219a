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
#include <QDBusVariant>
#include <QLoggingCategory>

#include <memory>

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
    // A queued call waits in the thread's queue even when there is no application object yet.
    QMetaObject::invokeMethod(this, &Client::connectToBus, Qt::QueuedConnection);
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
            qCDebug(lcSystemSettings) << "Cannot unmount" << path << watcher->error();
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
                QString(), this, SLOT(onOwnerChanged(QString, QString, QString)));
    // With the sender named, signals that others make up do not get here.
    bus.connect(Service, RootPath, ObjectManager, QStringLiteral("InterfacesAdded"), this,
                SLOT(onInterfacesAdded(QDBusMessage)));
    bus.connect(Service, RootPath, ObjectManager, QStringLiteral("InterfacesRemoved"), this,
                SLOT(onInterfacesRemoved(QDBusMessage)));
    bus.connect(Service, QString(), Properties, QStringLiteral("PropertiesChanged"), this,
                SLOT(onPropertiesChanged(QDBusMessage)));
    list();
}

void Client::onOwnerChanged(const QString & /*name*/, const QString & /*oldOwner*/,
                            const QString &newOwner)
{
    delete m_listing;
    m_listing = nullptr;
    m_objects.clear();
    if (!newOwner.isEmpty())
        list();
}

void Client::list()
{
    m_isListingTaken = false;
    m_listing = ask(methodCall(RootPath, ObjectManager, QStringLiteral("GetManagedObjects")));
    connect(m_listing, &QDBusPendingCallWatcher::finished, this, &Client::onListed);
}

void Client::onListed()
{
    if (!m_isListingTaken)
        takeListing(m_listing->reply());
    m_listing->deleteLater();
    m_listing = nullptr;
    announceNews();
}

void Client::takeListing(const QDBusMessage &reply)
{
    m_isListingTaken = true;
    if (reply.signature() != QLatin1String("a{oa{sa{sv}}}")) {
        qCDebug(lcSystemSettings) << "Cannot list storage" << reply;
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
    QDBusPendingCallWatcher *watcher =
        ask(methodCall(path, Properties, QStringLiteral("Get"), {interface, property}));
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
        const QDBusMessage reply = watcher->reply();
        watcher->deleteLater();
        if (m_listing || reply.signature() != QLatin1String("v"))
            return;
        const QVariant value = argument<QDBusVariant>(reply, 0).variant();
        m_objects.change(path, interface, {{property, value}});
        announceNews();
    });
}

void Client::announceNews()
{
    for (const Partition &partition : m_objects.takeNews())
        Q_EMIT partitionAdded(partition);
}

QDBusPendingCallWatcher *Client::ask(const QDBusMessage &question)
{
    // A reply that is there before its watcher has lost its place among the signals.
    std::unique_ptr<QDBusPendingCallWatcher> watcher;
    do {
        watcher = std::make_unique<QDBusPendingCallWatcher>(
            QDBusConnection::systemBus().asyncCall(question), this);
    } while (watcher->isFinished() && !watcher->isError());
    return watcher.release();
}

} // namespace UDisks
