// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSSTACK_H
#define SYSTEMSETTINGS_UDISKSSTACK_H

#include <QStringList>

#include <functional>

namespace UDisks {

/// Returns the names of the device files on which the kernel has built the one named @p device:
/// the physical devices of a logical volume, the members of an array. Empty for a device that is
/// built on no other, and for one that the kernel does not know.
QStringList devicesBelow(const QString &device);

/// Returns what @p top is built on in the end, when @p below tells what something is built on
/// directly: @p top itself when that is nothing, or only a circle.
QStringList foundations(const QString &top,
                        const std::function<QStringList(const QString &)> &below);

} // namespace UDisks

#endif
