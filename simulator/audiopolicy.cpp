// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"

namespace Simulator {

AudioPolicy::AudioPolicy()
    : Service(QStringLiteral("org.freedesktop.ohm.mdm"))
{
    const auto run = [this](const Call &call) {
        return set(call.arguments.at(0).toString(), call.arguments.at(1).toString());
    };
    objects().add(QStringLiteral("/org/freedesktop/ohm/mdm"),
                  {name(), {{QStringLiteral("Set"), QStringLiteral("ss"), {}, run}}, {}, {}});
}

Reply AudioPolicy::set(const QString &item, const QString &value)
{
    if (item != QLatin1String("microphone"))
        return Reply::invalidArguments(QStringLiteral("There is no ") + item);
    const bool isEnabled = value == QLatin1String("enabled");
    if (!isEnabled && value != QLatin1String("disabled"))
        return Reply::invalidArguments(value + QStringLiteral(" is no state"));
    if (m_isMicrophoneEnabled != isEnabled) {
        m_isMicrophoneEnabled = isEnabled;
        Q_EMIT changed();
    }
    return {};
}

} // namespace Simulator
