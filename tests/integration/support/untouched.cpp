// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/untouched.h"

#include "support/facts.h"

namespace Support {

Untouched::Untouched(WatchedDaemon &daemon)
    : m_daemon(daemon)
    , m_policies(Files::snapshot(PolicyFile))
    , m_switches(Files::snapshot(SwitchFile))
    , m_marker(Files::snapshot(CameraMarker))
{
    if (!m_marker.exists)
        qFatal("The camera is off from the start");
    m_daemon.forget();
}

QStringList Untouched::traces()
{
    QStringList traces = m_daemon.recorded() + m_daemon.logged();
    if (!(Files::snapshot(PolicyFile) == m_policies))
        traces.append(PolicyFile);
    if (!(Files::snapshot(SwitchFile) == m_switches))
        traces.append(SwitchFile);
    if (!(Files::snapshot(CameraMarker) == m_marker))
        traces.append(CameraMarker);
    return traces;
}

} // namespace Support
