// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_UNTOUCHED_H
#define GOVD_TESTS_SUPPORT_UNTOUCHED_H

#include "support/files.h"
#include "support/watcheddaemon.h"

namespace Support {

/// Shows that a write which the daemon refused has left nothing behind. The camera's policy must be
/// on when it is made.
class Untouched
{
public:
    explicit Untouched(WatchedDaemon &daemon);

    /// What a write has left behind since then: lines in the system log and in the daemon's own,
    /// and the name of each file that is another one now.
    QStringList traces();

private:
    WatchedDaemon &m_daemon;
    FileSnapshot m_policies;
    FileSnapshot m_switches;
    FileSnapshot m_marker;
};

} // namespace Support

#endif
