// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSSTACK_H
#define SYSTEMSETTINGS_UDISKSSTACK_H

#include <QHash>
#include <QStringList>

#include <functional>

namespace UDisks {

/// Returns the names of the device files on which the kernel has built the one named @p device:
/// the physical devices of a logical volume, the members of an array. Empty for a device that is
/// built on no other, and for one that the kernel does not know.
QStringList devicesBelow(const QString &device);

/// Finds what devices are built on in the end.
///
/// It keeps the answers for a chain of devices, so all devices of a chain cost one walk. The
/// answers hold as long as the devices do not change.
class Foundations
{
public:
    /// Returns what a device is built on directly.
    using Below = std::function<QStringList(const QString &)>;

    explicit Foundations(Below below);

    /// Returns what @p top is built on in the end: @p top itself when that is nothing, or only a
    /// circle.
    QStringList of(const QString &top);

private:
    Below m_below;
    QHash<QString, QStringList> m_known; ///< for devices of chains; empty for those in a circle
};

} // namespace UDisks

#endif
