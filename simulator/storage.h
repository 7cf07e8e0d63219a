// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_STORAGE_H
#define GOVD_SIMULATOR_STORAGE_H

#include "simulator/service.h"

namespace Simulator {

/// A drive of the storage service.
struct Drive
{
    QString id; ///< last part of its object path
    QString connectionBus = {};
    QString vendor = {};
    QString model = {};
    bool isRemovable = true;
};

/// A block device of the storage service.
struct Block
{
    QString id; ///< last part of its device file and, as far as one can hold it, of its object path
    QString drive = {}; ///< object path of its drive; empty for none
    bool isSystem = false;
    bool hasFilesystem = true;
    bool hasPartitionTable = false;
    QStringList mountPoints = {};
    QString label = {}; ///< of its file system; where it is mounted is called after it
    QString encrypted = {}; ///< object path of the device whose decrypted content it is, if any
};

/// Drives and block devices as the storage service UDisks2 shows them. What is plugged in, pulled
/// out, mounted and unmounted is told on the bus.
class Storage : public Service
{
    Q_OBJECT

public:
    Storage();

    /// Plugs a drive in and returns its object path.
    QString plug(const Drive &drive);

    /// Plugs a block device in and returns its object path. Its drive need not be there yet.
    QString plug(const Block &block);

    /// Pulls the drive or block device at @p path out.
    void unplug(const QString &path);

    /// Makes a file system on the block device at @p path, or wipes it.
    void setFilesystem(const QString &path, bool hasFilesystem);

    /// Mounts the block device at @p path in these places, or unmounts it: with none. The same
    /// place can be there twice, and is told once. The method Unmount takes the last one away.
    void setMountPoints(const QString &path, const QStringList &mountPoints);

    /// Whether changed mount points are told with their value, or only that they have changed.
    void setTellsMountPoints(bool tells) { m_tellsMountPoints = tells; }

    /// Whether a file system that is plugged in is mounted at once, as a desktop does it.
    void setMountsAtOnce(bool mounts) { m_mountsAtOnce = mounts; }

    /// The drives and block devices by object path.
    QMap<QString, Drive> drives() const { return m_drives; }
    QMap<QString, Block> blocks() const { return m_blocks; }

private:
    Interface driveInterface(const QString &path) const;
    Interface blockInterface(const QString &path) const;
    Interface filesystemInterface(const QString &path);
    Reply mount(const QString &path);
    Reply unmount(const QString &path);
    void sendAdded(const QString &path, const QStringList &interfaces);
    void sendRemoved(const QString &path, const QStringList &interfaces);

    QMap<QString, Drive> m_drives;
    QMap<QString, Block> m_blocks;
    bool m_tellsMountPoints = true;
    bool m_mountsAtOnce = false;
};

} // namespace Simulator

#endif
