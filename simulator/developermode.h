// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_DEVELOPERMODE_H
#define GOVD_SIMULATOR_DEVELOPERMODE_H

#include "simulator/service.h"

namespace Simulator {

/// Opens the device to developers: the developer-mode service.
class DeveloperMode : public Service
{
    Q_OBJECT

public:
    DeveloperMode();

    bool isRemoteConnectionEnabled() const { return m_isRemoteConnectionEnabled; }

    /// Switches remote access on or off, as the person who holds the device would.
    void setRemoteConnectionEnabled(bool isEnabled);

private:
    bool m_isRemoteConnectionEnabled = true;
};

} // namespace Simulator

#endif
