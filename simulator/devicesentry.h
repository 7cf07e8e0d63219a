// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_DEVICESENTRY_H
#define GOVD_SIMULATOR_DEVICESENTRY_H

#include "simulator/service.h"

namespace Simulator {

/// Lets USB devices in or keeps them out: the USB device manager.
class DeviceSentry : public Service
{
    Q_OBJECT

public:
    DeviceSentry();

    bool isUsbEnabled() const { return m_isUsbEnabled; }

private:
    Reply setUsbEnabled(bool isEnabled);

    bool m_isUsbEnabled = true;
};

} // namespace Simulator

#endif
