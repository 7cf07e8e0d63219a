// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/blockdevice.h"

#include "support/files.h"

#include <QDir>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Support {

BlockDevice::BlockDevice(const QString &name)
{
    const QByteArray number = Files::read(QStringLiteral("/sys/class/block/%1/dev").arg(name));
    const QList<QByteArray> parts = number.trimmed().split(':');
    if (parts.size() != 2 || !become(name, makedev(parts.at(0).toUInt(), parts.at(1).toUInt())))
        qFatal("There is no block device %s", qPrintable(name));
}

BlockDevice::~BlockDevice()
{
    for (const QString &path : mountPoints())
        umount2(qPrintable(path), MNT_DETACH);
}

QString BlockDevice::node() const
{
    return QStringLiteral("/dev/") + m_name;
}

QString BlockDevice::objectPath() const
{
    return QStringLiteral("/org/freedesktop/UDisks2/block_devices/") + m_name;
}

QString BlockDevice::mountPoint()
{
    return QStringLiteral("/run/govd-test-mount");
}

bool BlockDevice::mount(const QString &place) const
{
    return QDir().mkpath(place)
        && ::mount(qPrintable(node()), qPrintable(place), "ext4", 0, nullptr) == 0;
}

bool BlockDevice::mountAgain(const QString &place)
{
    return QDir().mkpath(place)
        && ::mount(qPrintable(mountPoint()), qPrintable(place), nullptr, MS_BIND, nullptr) == 0;
}

QStringList BlockDevice::mountPoints() const
{
    enum Field { Device = 2, MountPoint = 4 };
    const QString device = QStringLiteral("%1:%2").arg(major(m_number)).arg(minor(m_number));
    const QStringList lines =
        QString::fromLocal8Bit(Files::read(QStringLiteral("/proc/self/mountinfo")))
            .split(QLatin1Char('\n'));
    QStringList found;
    for (const QString &line : lines) {
        const QStringList fields = line.split(QLatin1Char(' '));
        if (fields.value(Device) == device)
            found.append(fields.value(MountPoint));
    }
    return found;
}

/// The device file is the sandbox's own: one that is mounted from elsewhere would be what UDisks2
/// unmounts.
bool BlockDevice::become(const QString &name, dev_t number)
{
    m_name = name;
    m_number = number;
    umount2(qPrintable(node()), MNT_DETACH);
    unlink(qPrintable(node()));
    return mknod(qPrintable(node()), S_IFBLK | 0600, number) == 0;
}

} // namespace Support
