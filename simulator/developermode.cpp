// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/developermode.h"

namespace Simulator {

DeveloperMode::DeveloperMode()
    : Service(QStringLiteral("org.kvt.developermode"))
{
    const auto set = [this](const Call &call) {
        setRemoteConnectionEnabled(call.arguments.at(0).toBool());
        return Reply();
    };
    objects().add(QStringLiteral("/"),
                  {name(),
                   {{QStringLiteral("SetRemoteConnectionEnabled"), QStringLiteral("b"), {}, set}},
                   {},
                   {}});
}

void DeveloperMode::setRemoteConnectionEnabled(bool isEnabled)
{
    if (m_isRemoteConnectionEnabled == isEnabled)
        return;
    m_isRemoteConnectionEnabled = isEnabled;
    Q_EMIT changed();
}

} // namespace Simulator
