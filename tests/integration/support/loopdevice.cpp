// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/loopdevice.h"

#include "support/files.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Support {

namespace {

constexpr int LoopMajor = 7;
constexpr qint64 Size = 8 * 1024 * 1024;
const char Control[] = "/dev/loop-control";
const unsigned ControlMajor = 10;
const unsigned ControlMinor = 237;

/// Number of a loop device that nobody uses at this moment; -1 without loop devices.
int freeNumber()
{
    // Opening the node brings the kernel's module; where nobody has made the node, it is made here.
    if (access(Control, F_OK) != 0)
        mknod(Control, S_IFCHR | 0600, makedev(ControlMajor, ControlMinor));
    const int control = open(Control, O_RDWR | O_CLOEXEC);
    if (control < 0)
        return -1;
    const int number = ioctl(control, LOOP_CTL_GET_FREE);
    close(control);
    return number;
}

} // namespace

LoopDevice::LoopDevice()
{
    if (!makeFileSystem())
        return;
    // Somebody else may take the free device first.
    constexpr int Attempts = 20;
    bool isTaken = true;
    for (int i = 0; i < Attempts && isTaken; ++i)
        isTaken = !attach() && errno == EBUSY;
    if (m_descriptor < 0)
        fail(QStringLiteral("no loop device can be had (%1); a container needs more rights")
                 .arg(QString::fromLocal8Bit(std::strerror(errno))));
}

LoopDevice::~LoopDevice()
{
    for (const QString &path : mountPoints())
        umount2(qPrintable(path), MNT_DETACH);
    if (m_descriptor >= 0)
        close(m_descriptor);
    QFile::remove(backingFile());
}

QString LoopDevice::backingFile()
{
    return QStringLiteral("/run/govd-test-disk");
}

QString LoopDevice::node() const
{
    return QStringLiteral("/dev/loop%1").arg(m_number);
}

QString LoopDevice::objectPath() const
{
    return QStringLiteral("/org/freedesktop/UDisks2/block_devices/loop%1").arg(m_number);
}

QString LoopDevice::mountPoint()
{
    return QStringLiteral("/run/govd-test-mount");
}

bool LoopDevice::mount() const
{
    return QDir().mkpath(mountPoint())
        && ::mount(qPrintable(node()), qPrintable(mountPoint()), "ext4", 0, nullptr) == 0;
}

/// Every place where the device is mounted, as the kernel's table has it.
QStringList LoopDevice::mountPoints() const
{
    enum Field { Device = 2, MountPoint = 4 };
    const QString device = QStringLiteral("%1:%2").arg(LoopMajor).arg(m_number);
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

bool LoopDevice::makeFileSystem()
{
    QFile file(backingFile());
    if (!file.open(QIODevice::WriteOnly) || !file.resize(Size))
        return fail(QStringLiteral("there is no room for a disk image"));
    QProcess program;
    program.start(QStringLiteral("mkfs.ext4"),
                  {QStringLiteral("-q"), QStringLiteral("-F"), backingFile()});
    if (!program.waitForFinished() || program.exitCode() != 0)
        return fail(QStringLiteral("mkfs.ext4 (package e2fsprogs) fails: ")
                    + QString::fromLocal8Bit(program.readAllStandardError()));
    return true;
}

/// Makes a loop device of the file. Sets errno when that fails.
bool LoopDevice::attach()
{
    m_number = freeNumber();
    if (m_number < 0 || !makeNode())
        return false;
    const int device = open(qPrintable(node()), O_RDWR | O_CLOEXEC);
    const int file = open(qPrintable(backingFile()), O_RDWR | O_CLOEXEC);
    loop_config configuration = {};
    configuration.fd = static_cast<__u32>(file);
    configuration.info.lo_flags = LO_FLAGS_AUTOCLEAR;
    const bool isAttached = ioctl(device, LOOP_CONFIGURE, &configuration) == 0;
    const int error = errno;
    close(file);
    if (isAttached)
        m_descriptor = device;
    else
        close(device);
    errno = error;
    return isAttached;
}

/// A device file of the sandbox's own: one that is mounted from elsewhere would be what UDisks2
/// unmounts.
bool LoopDevice::makeNode() const
{
    umount2(qPrintable(node()), MNT_DETACH);
    unlink(qPrintable(node()));
    return mknod(qPrintable(node()), S_IFBLK | 0600,
                 makedev(LoopMajor, static_cast<unsigned>(m_number)))
        == 0;
}

bool LoopDevice::fail(const QString &what)
{
    m_failure = what;
    return false;
}

} // namespace Support
