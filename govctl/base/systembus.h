// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_SYSTEMBUS_H
#define GOVCTL_SYSTEMBUS_H

#include <QDeadlineTimer>

/// Connects to the system bus within a time limit: a bus that hangs blocks the bus library.
namespace SystemBus {

/// Connects this process to the system bus, unless it is connected. False when the bus has not
/// answered before @p deadline: after that QDBusConnection::systemBus() must not be called, because
/// it would block. True means only that it does not block; isConnected() of the connection tells
/// whether there is a bus. Main thread only.
[[nodiscard]] bool connect(QDeadlineTimer deadline);

/// Whether connecting was given up. The bus library's destructors would then block, so the process
/// has to end by std::_Exit().
bool isGivenUp();

} // namespace SystemBus

#endif
