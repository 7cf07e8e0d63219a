// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// The part of the client that unmounts.
#include "udiskscall.h"
#include "udisksclient.h"
#include "udisksnames.h"
#include "udisksreminders.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDebug>

namespace UDisks {

void Client::unmount(const Partition &partition, const QVariantMap &options)
{
    if (!QCoreApplication::instance())
        return;
    const QDBusMessage call = methodCall(partition.objectPath(), Filesystem,
                                         QStringLiteral("Unmount"), {QVariant(options)});
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
        watcher->deleteLater();
        takeUnmount(partition, watcher->error());
    });
}

void Client::takeUnmount(const Partition &partition, const QDBusError &error)
{
    const QString path = partition.objectPath();
    const bool isMounted = !m_objects.mountPoints(path).isEmpty();
    if (!error.isValid()) {
        // What is mounted twice in one place stays so without a word; what is not, the service may
        // tell a little later.
        if (isMounted)
            Reminders::instance().noteSuccess(path);
    } else if (isMounted && Reminders::instance().noteFailure(path)) {
        QString device;
        QDebug(&device).nospace() << partition.devicePath(); // in quotes, on one line
        qCWarning(lcSystemSettings, "Cannot unmount %s: %s", qUtf8Printable(device),
                  qUtf8Printable(error.name()));
    } else {
        qCDebug(lcSystemSettings, "Cannot unmount %s: %s", qUtf8Printable(path),
                qUtf8Printable(error.name()));
    }
}

void Client::remind(const QString &path, bool &isMounted)
{
    if (!m_objects.has(path, Filesystem))
        listAgain();
    if (m_objects.mountPoints(path).isEmpty())
        return;
    isMounted = true;
    const QVector<Partition> partitions = m_objects.partitionsOf(path);
    for (const Partition &partition : partitions)
        Q_EMIT partitionAdded(partition);
}

void Client::noteMounts(const QString &path)
{
    if (m_objects.has(path, Filesystem) && m_objects.mountPoints(path).isEmpty())
        Reminders::instance().end(path);
}

} // namespace UDisks
