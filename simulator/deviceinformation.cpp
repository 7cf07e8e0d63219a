// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/deviceinformation.h"

namespace Simulator {

DeviceInformation::DeviceInformation()
    : Service(QStringLiteral("org.kvt.deviceinfo"))
{
    const Property certified{QStringLiteral("isOsCertified"),
                             QStringLiteral("b"),
                             [this] { return QVariant(m_isOsCertified); },
                             {}};
    objects().add(QStringLiteral("/org/kvt/deviceinfo/Features"),
                  {QStringLiteral("org.kvt.deviceinfo.Features"), {}, {certified}, {}});
}

void DeviceInformation::setOsCertified(bool isCertified)
{
    if (m_isOsCertified == isCertified)
        return;
    m_isOsCertified = isCertified;
    Q_EMIT changed();
}

} // namespace Simulator
