// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_UPPERDEVICE_H
#define GOVD_TESTS_SUPPORT_UPPERDEVICE_H

#include "support/loopdevice.h"
#include "support/mount.h"

#include <memory>

namespace Support {

/// A block device that is built on another one, as the kernel's device mapper makes a logical
/// volume or the content of an encrypted device, on machines that have no device mapper.
///
/// It is a loop device made of the other one. The link by which the kernel tells what a device is
/// built on is made by this object, in the kernel's place.
class UpperDevice : public LoopDevice
{
public:
    explicit UpperDevice(const BlockDevice *lower);

    /// Takes the link away.
    void forgetLower() { m_lowerDevices.reset(); }

private:
    std::unique_ptr<Mount> m_lowerDevices;
};

} // namespace Support

#endif
