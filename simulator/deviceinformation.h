// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_DEVICEINFORMATION_H
#define GOVD_SIMULATOR_DEVICEINFORMATION_H

#include "simulator/service.h"

namespace Simulator {

/// Tells what the device is: the device-information service.
class DeviceInformation : public Service
{
    Q_OBJECT

public:
    DeviceInformation();

    bool isOsCertified() const { return m_isOsCertified; }
    void setOsCertified(bool isCertified);

private:
    bool m_isOsCertified = false;
};

} // namespace Simulator

#endif
