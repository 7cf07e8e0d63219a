// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/stick.h"

#include "support/wording.h"

using Simulator::Storage;

namespace Support {

QString Stick::path() const
{
    return QStringLiteral("/org/freedesktop/UDisks2/block_devices/") + id;
}

QString Stick::mountPoint() const
{
    return QStringLiteral("/run/media/") + id;
}

void Stick::plug(Neighbour<Storage> &storage) const
{
    storage.ask([this](Storage &service) {
        Simulator::Block block;
        block.id = id;
        block.isSystem = isSystem;
        block.hasPartitionTable = hasPartitionTable;
        if (isMounted)
            block.mountPoints = QStringList(mountPoint());
        if (bus != QStringLiteral("none")) {
            Simulator::Drive drive;
            drive.id = QStringLiteral("drive_of_") + id;
            drive.connectionBus = bus;
            block.drive = service.plug(drive);
        }
        service.plug(block);
    });
}

void Stick::mount(Neighbour<Storage> &storage) const
{
    storage.ask(
        [this](Storage &service) { service.setMountPoints(path(), QStringList(mountPoint())); });
}

bool Stick::isMountedIn(Neighbour<Storage> &storage) const
{
    return storage.ask(
        [this](Storage &service) { return !service.blocks().value(path()).mountPoints.isEmpty(); });
}

QString Stick::unmountOrder() const
{
    return Wording::call(QStringLiteral("org.freedesktop.UDisks2 ") + path()
                             + QStringLiteral(" org.freedesktop.UDisks2.Filesystem"),
                         QStringLiteral("Unmount"), QStringLiteral("a{sv}"), {QVariantMap()});
}

} // namespace Support
