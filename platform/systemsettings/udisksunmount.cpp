// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// The part of the client that unmounts.
#include "udiskscall.h"
#include "udisksclient.h"
#include "udisksnames.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDebug>

namespace UDisks {

void Client::unmount(const Partition &partition, const QVariantMap &options)
{
    if (!QCoreApplication::instance())
        return;
    const QString path = partition.objectPath();
    const QStringList places = m_objects.mountPoints(path);
    const QDBusMessage call =
        methodCall(path, Filesystem, QStringLiteral("Unmount"), {QVariant(options)});
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(call), this);
    ++m_unmounting[path];
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
        watcher->deleteLater();
        takeUnmount(partition, places, watcher->error());
    });
}

void Client::takeUnmount(const Partition &partition, const QStringList &before,
                         const QDBusError &error)
{
    const QString path = partition.objectPath();
    const auto calls = m_unmounting.find(path);
    if (calls != m_unmounting.end() && --*calls == 0)
        m_unmounting.erase(calls);

    const QStringList places = m_objects.mountPoints(path);
    if (!error.isValid() && places != before) {
        announceAgain(path);
        return;
    }
    if (!places.isEmpty())
        m_retries.takeFailure(path);
    if (error.isValid())
        complain(partition, error.name());
}

/// The service can report an unmount later than it answers, and of several mounts in one place it
/// lists one. So an unmount without an error has failed only if another one changed nothing either,
/// and somebody still wants it.
void Client::remind(const QString &path, bool onceMore)
{
    if (m_unmounting.contains(path))
        return; // the answer decides
    const QVector<Partition> partitions = m_objects.partitionsOf(path);
    announceAgain(path);
    if (!m_unmounting.contains(path)) {
        m_retries.end(path);
        return;
    }
    for (const Partition &partition : onceMore ? partitions : QVector<Partition>())
        complain(partition, QStringLiteral("still mounted"));
}

void Client::announceAgain(const QString &path)
{
    endIfUnmounted(path);
    if (m_unmounting.contains(path) || m_objects.mountPoints(path).isEmpty())
        return;
    const QVector<Partition> partitions = m_objects.partitionsOf(path);
    for (const Partition &partition : partitions)
        Q_EMIT partitionAdded(partition);
}

void Client::endIfUnmounted(const QString &path)
{
    if (!m_objects.mountPoints(path).isEmpty())
        return;
    m_retries.end(path);
    m_complaints.remove(path);
}

/// It is no failure when the partition is not mounted anyway.
void Client::complain(const Partition &partition, const QString &reason)
{
    const QString path = partition.objectPath();
    if (m_objects.mountPoints(path).isEmpty() || m_complaints.contains(path)) {
        qCDebug(lcSystemSettings, "Cannot unmount %s: %s", qUtf8Printable(path),
                qUtf8Printable(reason));
        return;
    }
    m_complaints.insert(path);
    QString device;
    QDebug(&device).nospace() << partition.devicePath(); // in quotes, on one line
    qCWarning(lcSystemSettings, "Cannot unmount %s: %s", qUtf8Printable(device),
              qUtf8Printable(reason));
}

} // namespace UDisks
