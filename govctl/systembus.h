// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_SYSTEMBUS_H
#define GOVCTL_SYSTEMBUS_H

#include <QDeadlineTimer>

/// How the command-line programs reach the system bus, which may be stuck itself.
namespace SystemBus {

/// Connects this process to the system bus, unless it is connected. False when the bus has not
/// answered before @p deadline: then QDBusConnection::systemBus() must not be called any more,
/// because it waits as long as the bus does. True says only that it does not wait; whether there
/// is a bus, the connection tells. Main thread only.
[[nodiscard]] bool connect(QDeadlineTimer deadline);

/// Whether connecting was ever given up. The bus library then waits without end in an orderly end
/// of the process, so it has to be left by std::_Exit().
bool isGivenUp();

} // namespace SystemBus

#endif
