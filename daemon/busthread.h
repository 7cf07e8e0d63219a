// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_DAEMON_BUSTHREAD_H
#define GOVD_DAEMON_BUSTHREAD_H

/// The thread in which Qt's bus library receives.
namespace BusThread {

/// Waits until the thread has dealt with all that the bus has sent by now; without a bus, returns.
///
/// To be called after each step that gives this process a name on the bus. The thread adds the name
/// to a list that every call to a service looks through, and does so without the lock of that list:
/// a call at the same moment, once in some ten thousand starts, crashes the process.
void catchUp();

} // namespace BusThread

#endif
