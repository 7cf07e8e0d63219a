// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_STICK_H
#define GOVD_TESTS_SUPPORT_STICK_H

#include "simulator/storage.h"
#include "support/neighbour.h"

namespace Support {

/// Storage that a person may plug into the device: a drive with one block device on it.
struct Stick
{
    QString id = QStringLiteral("stick"); ///< of the block device
    QString bus = QStringLiteral("usb"); ///< connection bus of the drive; "none" for no drive
    bool isSystem = false;
    bool isMounted = true;
    bool hasPartitionTable = false;

    /// Object path of the block device.
    QString path() const;

    /// Where it is when it is mounted.
    QString mountPoint() const;

    /// Plugs it in.
    void plug(Neighbour<Simulator::Storage> &storage) const;

    /// Mounts it after it was plugged in.
    void mount(Neighbour<Simulator::Storage> &storage) const;

    /// Whether the storage service has it mounted now.
    bool isMountedIn(Neighbour<Simulator::Storage> &storage) const;

    /// The daemon's order to unmount it, as WatchedDaemon::calls() has it: with no options at all.
    QString unmountOrder() const;
};

} // namespace Support

#endif
