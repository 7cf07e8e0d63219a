// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_BUSTHREAD_H
#define GOVD_BASE_BUSTHREAD_H

/// The connection to the system bus, and the thread in which Qt's bus library receives from it.
namespace BusThread {

/// Waits until the thread has dealt with all that the bus has sent by now; without a bus, returns.
///
/// To be called after each step that gives this process a name on the bus. The thread adds the name
/// to a list that every call to a service looks through, and does so without the lock of that list:
/// a call at the same moment, once in some ten thousand starts, crashes the process.
void catchUp();

/// Has the connection take in whatever the bus sends; without a bus, does nothing.
///
/// With 63 MiB or 4,096 descriptors in messages that have not been dealt with, libdbus stops
/// reading from its socket. It begins again in the thread that frees a message, which is the main
/// thread, where Qt cannot switch the socket's watch on: the process would be deaf from then on. So
/// memory, which the service manager limits, is the only limit.
void liftLimits();

} // namespace BusThread

#endif
