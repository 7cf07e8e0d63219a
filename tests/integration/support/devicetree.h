// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_DEVICETREE_H
#define GOVD_TESTS_SUPPORT_DEVICETREE_H

#include "support/mount.h"

#include <QStringList>

namespace Support {

/// Block devices of the test's own in the place where the kernel tells which is built on which,
/// instead of those of the machine. Gone with this object.
///
/// It takes the place of the kernel's device mapper, which not every machine has.
class DeviceTree
{
public:
    DeviceTree();

    /// A device with this name of the kernel's, built on others.
    void add(const QString &name, const QStringList &below = {}) const;

    /// A partition of the device @p whole, which has been added.
    void addPartition(const QString &name, const QString &whole) const;

private:
    Mount m_mount;
};

} // namespace Support

#endif
