// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_MICROPHONESTATES_H
#define GOVD_TESTS_SUPPORT_MICROPHONESTATES_H

#include "support/watcheddaemon.h"

namespace Support {

inline const QString AudioPolicyName = QStringLiteral("org.freedesktop.ohm.mdm");

inline const QString Enabled = QStringLiteral("enabled");
inline const QString Disabled = QStringLiteral("disabled");

/// To what the daemon has set the microphone, call by call: Enabled or Disabled. It shows every
/// task of the daemon, because it is set for both values.
inline QStringList microphoneStates(WatchedDaemon &daemon)
{
    QStringList states;
    for (const QString &call : daemon.calls(AudioPolicyName))
        states.append(call.contains(QStringLiteral("\"enabled\"")) ? Enabled : Disabled);
    return states;
}

} // namespace Support

#endif
