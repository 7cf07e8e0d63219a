// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/loopdevice.h"

#include <QFile>
#include <QProcess>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <linux/blkpg.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Support {

namespace {

constexpr int LoopMajor = 7;
const char Control[] = "/dev/loop-control";
const unsigned ControlMajor = 10;
const unsigned ControlMinor = 237;

constexpr int Mebibyte = 1024 * 1024;
constexpr int Size = 8 * Mebibyte;

/// Where the two partitions begin, and how long they are.
constexpr int PartitionStarts[] = {1 * Mebibyte, 4 * Mebibyte};
constexpr int PartitionSize = 3 * Mebibyte;

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

/// Makes a partition of a disk. The kernel is told, and need not understand a partition table.
bool addPartition(int disk, int number, int start)
{
    blkpg_partition partition = {};
    partition.pno = number;
    partition.start = start;
    partition.length = PartitionSize;
    blkpg_ioctl_arg order = {};
    order.op = BLKPG_ADD_PARTITION;
    order.datalen = sizeof partition;
    order.data = &partition;
    return ioctl(disk, BLKPG, &order) == 0;
}

/// What mkfs.ext4 has to say against making a file system in the disk image; empty when all is
/// well.
QString makeFileSystem(int offset, int size)
{
    QProcess program;
    program.start(QStringLiteral("mkfs.ext4"),
                  {QStringLiteral("-q"), QStringLiteral("-F"), QStringLiteral("-E"),
                   QStringLiteral("offset=%1").arg(offset), LoopDevice::backingFile(),
                   QStringLiteral("%1k").arg(size / 1024)});
    if (program.waitForFinished() && program.exitCode() == 0)
        return QString();
    return QStringLiteral("mkfs.ext4 (package e2fsprogs) fails: ")
        + QString::fromLocal8Bit(program.readAllStandardError());
}

} // namespace

LoopDevice::LoopDevice(Content content)
{
    if (!makeFile(content))
        return;
    attach(backingFile());
    if (content == TwoPartitions
        && (!addPartition(m_descriptor, 1, PartitionStarts[0])
            || !addPartition(m_descriptor, 2, PartitionStarts[1])))
        fail(QStringLiteral("the kernel makes no partitions"));
}

LoopDevice::LoopDevice(const QString &path)
{
    attach(path);
}

LoopDevice::~LoopDevice()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}

QString LoopDevice::backingFile()
{
    return QStringLiteral("/run/govd-test-disk");
}

QString LoopDevice::partitionName(int number) const
{
    return QStringLiteral("%1p%2").arg(name()).arg(number);
}

bool LoopDevice::makeFile(Content content)
{
    // The device before may not have let go of its file yet.
    QFile::remove(backingFile());
    QFile file(backingFile());
    if (!file.open(QIODevice::WriteOnly) || !file.resize(Size))
        return fail(QStringLiteral("there is no room for a disk image"));
    file.close();
    if (content == FileSystem)
        return fail(makeFileSystem(0, Size));
    return fail(makeFileSystem(PartitionStarts[0], PartitionSize))
        && fail(makeFileSystem(PartitionStarts[1], PartitionSize));
}

void LoopDevice::attach(const QString &path)
{
    // Somebody else may take the free device first.
    constexpr int Attempts = 20;
    bool isTaken = true;
    for (int i = 0; i < Attempts && isTaken; ++i)
        isTaken = !attachFree(path) && errno == EBUSY;
    if (m_descriptor < 0)
        fail(QStringLiteral("no loop device can be had (%1); a container needs more rights")
                 .arg(QString::fromLocal8Bit(std::strerror(errno))));
}

/// Makes a free loop device of the file. Sets errno when that fails.
bool LoopDevice::attachFree(const QString &path)
{
    const int number = freeNumber();
    if (number < 0
        || !become(QStringLiteral("loop%1").arg(number),
                   makedev(LoopMajor, static_cast<unsigned>(number))))
        return false;
    const int device = open(qPrintable(node()), O_RDWR | O_CLOEXEC);
    const int file = open(qPrintable(path), O_RDWR | O_CLOEXEC);
    loop_config configuration = {};
    configuration.fd = static_cast<__u32>(file);
    configuration.info.lo_flags = LO_FLAGS_AUTOCLEAR | LO_FLAGS_PARTSCAN;
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

/// Keeps @p what has failed. True when that is nothing.
bool LoopDevice::fail(const QString &what)
{
    m_failure = what;
    return what.isEmpty();
}

} // namespace Support
