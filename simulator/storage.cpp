// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/storage.h"

#include <QDBusMetaType>
#include <QFile>

#include <cctype>

namespace Simulator {
namespace {

const QLatin1String RootPath("/org/freedesktop/UDisks2");
const QLatin1String BlockInterface("org.freedesktop.UDisks2.Block");
const QLatin1String DriveInterface("org.freedesktop.UDisks2.Drive");
const QLatin1String FilesystemInterface("org.freedesktop.UDisks2.Filesystem");
const QLatin1String PartitionTableInterface("org.freedesktop.UDisks2.PartitionTable");
const QLatin1String ObjectManager("org.freedesktop.DBus.ObjectManager");
const QLatin1String MountPoints("MountPoints");

/// Names of files go over the bus as bytes with the NUL of a C string at their end.
QByteArray fileNameBytes(const QString &name)
{
    return QFile::encodeName(name) + '\0';
}

/// The path of an object in a @p folder; what a path cannot hold is written as a number.
QString objectPath(const char *folder, const QString &id)
{
    QString path = RootPath + QLatin1String(folder);
    for (const char c : id.toUtf8()) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_')
            path += QLatin1Char(c);
        else
            path += QString::asprintf("_%02x", static_cast<unsigned char>(c));
    }
    return path;
}

/// An object path that says that there is no such object.
QDBusObjectPath objectOrNone(const QString &path)
{
    return QDBusObjectPath(path.isEmpty() ? QStringLiteral("/") : path);
}

template <typename Read> Property readOnly(const char *name, const char *type, Read read)
{
    return {QLatin1String(name),
            QLatin1String(type),
            [read] { return QVariant::fromValue(read()); },
            {}};
}

Reply failure(const char *error, const QString &path)
{
    return Reply::failure(QStringLiteral("org.freedesktop.UDisks2.Error.") + QLatin1String(error),
                          path);
}

} // namespace

Storage::Storage()
    : Service(QStringLiteral("org.freedesktop.UDisks2"))
{
    qDBusRegisterMetaType<QList<QByteArray>>();
    objects().add(RootPath, objects().objectManager());
}

QString Storage::plug(const Drive &drive)
{
    const QString path = objectPath("/drives/", drive.id);
    m_drives.insert(path, drive);
    objects().add(path, driveInterface(path));
    sendAdded(path, {DriveInterface});
    Q_EMIT changed();
    return path;
}

QString Storage::plug(const Block &block)
{
    const QString path = objectPath("/block_devices/", block.id);
    m_blocks.insert(path, block);
    objects().add(path, blockInterface(path));
    if (block.hasPartitionTable)
        objects().add(path, {PartitionTableInterface, {}, {}, {}});
    if (block.hasFilesystem)
        objects().add(path, filesystemInterface(path));
    sendAdded(path, objects().values(path).keys());
    Q_EMIT changed();
    if (m_mountsAtOnce && block.hasFilesystem)
        mount(path);
    return path;
}

void Storage::unplug(const QString &path)
{
    const QStringList interfaces = objects().values(path).keys();
    objects().remove(path);
    m_drives.remove(path);
    m_blocks.remove(path);
    sendRemoved(path, interfaces);
    Q_EMIT changed();
}

void Storage::setFilesystem(const QString &path, bool hasFilesystem)
{
    m_blocks[path].hasFilesystem = hasFilesystem;
    if (hasFilesystem) {
        objects().add(path, filesystemInterface(path));
        sendAdded(path, {FilesystemInterface});
    } else {
        m_blocks[path].mountPoints.clear();
        objects().remove(path, FilesystemInterface);
        sendRemoved(path, {FilesystemInterface});
    }
    Q_EMIT changed();
}

void Storage::setMountPoints(const QString &path, const QStringList &mountPoints)
{
    m_blocks[path].mountPoints = mountPoints;
    if (m_tellsMountPoints)
        sendPropertyChanged(path, FilesystemInterface, MountPoints);
    else
        sendPropertyInvalidated(path, FilesystemInterface, MountPoints);
    Q_EMIT changed();
}

Interface Storage::driveInterface(const QString &path) const
{
    const Drive drive = m_drives.value(path);
    return {DriveInterface,
            {},
            {readOnly("Id", "s", [=] { return drive.id; }),
             readOnly("ConnectionBus", "s", [=] { return drive.connectionBus; }),
             readOnly("Vendor", "s", [=] { return drive.vendor; }),
             readOnly("Model", "s", [=] { return drive.model; }),
             readOnly("Removable", "b", [=] { return drive.isRemovable; })},
            {}};
}

Interface Storage::blockInterface(const QString &path) const
{
    const Block block = m_blocks.value(path);
    const QByteArray device = fileNameBytes(QStringLiteral("/dev/") + block.id);
    return {BlockInterface,
            {},
            {readOnly("Device", "ay", [=] { return device; }),
             readOnly("Drive", "o", [=] { return objectOrNone(block.drive); }),
             readOnly("CryptoBackingDevice", "o", [=] { return objectOrNone(block.encrypted); }),
             readOnly("HintSystem", "b", [=] { return block.isSystem; }),
             readOnly("IdLabel", "s", [=] { return block.label; })},
            {}};
}

Interface Storage::filesystemInterface(const QString &path)
{
    const auto mountPoints = [=] {
        QStringList places = m_blocks.value(path).mountPoints;
        places.removeDuplicates();
        QList<QByteArray> names;
        for (const QString &place : qAsConst(places))
            names.append(fileNameBytes(place));
        return names;
    };
    const QString options = QStringLiteral("a{sv}");
    return {FilesystemInterface,
            {{QStringLiteral("Mount"), options, QStringLiteral("s"),
              [=](const Call &) {
                  return mount(path);
              }},
             {QStringLiteral("Unmount"),
              options,
              {},
              [=](const Call &) {
                  return unmount(path);
              }}},
            {readOnly("MountPoints", "aay", mountPoints)},
            {}};
}

Reply Storage::mount(const QString &path)
{
    const Block block = m_blocks.value(path);
    if (!block.mountPoints.isEmpty())
        return failure("AlreadyMounted", path);
    const QString mountPoint =
        QStringLiteral("/run/media/") + (block.label.isEmpty() ? block.id : block.label);
    setMountPoints(path, {mountPoint});
    return Reply::of({mountPoint});
}

Reply Storage::unmount(const QString &path)
{
    QStringList left = m_blocks.value(path).mountPoints;
    if (left.isEmpty())
        return failure("NotMounted", path);
    const QString place = left.takeLast();
    if (left.contains(place)) {
        // There is nothing to tell: it is still mounted where it was.
        m_blocks[path].mountPoints = left;
        Q_EMIT changed();
    } else {
        setMountPoints(path, left);
    }
    return {};
}

void Storage::sendAdded(const QString &path, const QStringList &interfaces)
{
    InterfaceValues added;
    for (const QString &interface : interfaces)
        added.insert(interface, objects().values(path, interface));
    sendSignal(RootPath, ObjectManager, QStringLiteral("InterfacesAdded"),
               {QVariant::fromValue(QDBusObjectPath(path)), QVariant::fromValue(added)});
}

void Storage::sendRemoved(const QString &path, const QStringList &interfaces)
{
    sendSignal(RootPath, ObjectManager, QStringLiteral("InterfacesRemoved"),
               {QVariant::fromValue(QDBusObjectPath(path)), interfaces});
}

} // namespace Simulator
