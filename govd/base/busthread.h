// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_BUSTHREAD_H
#define GOVD_BASE_BUSTHREAD_H

/// The connection to the system bus, and the thread in which Qt's bus library receives from it.
namespace BusThread {

/// Waits until the thread has processed all that the bus has sent so far; without a bus, returns.
///
/// Call it after each step that gives this process a name on the bus: the connection itself, and
/// registerService(). On NameAcquired the thread adds the name to QtDBus's list of own names
/// without taking that list's lock, while every call to a service reads the list. A call at that
/// moment can crash the process (about one start in ten thousand).
void catchUp();

/// Lifts the connection's limits for received bytes and descriptors; without a bus, does nothing.
///
/// With 63 MiB or 4,096 descriptors in unprocessed messages, libdbus stops reading its socket. It
/// resumes in the thread that frees a message, which is the main thread, where Qt cannot enable the
/// socket's watch: the daemon would never read again. MemoryMax= of the unit is the limit instead.
void liftLimits();

} // namespace BusThread

#endif
