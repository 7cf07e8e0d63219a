// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_BUS_H
#define GOVD_SIMULATOR_PROGRAM_BUS_H

#include "simulator/program/verb.h"

#include <QDeadlineTimer>

namespace Simulator::Bus {

/// Connects to the system bus before @p deadline, which is @p timeout after its start. Why not, if
/// that fails: there is no bus, or it does not answer, and then it must not be touched any more.
Outcome connect(QDeadlineTimer deadline, std::chrono::milliseconds timeout);

/// There is no bus, as @p what says.
Failure absence(const QString &what);

/// No answer came within @p timeout, as when @p who is stopped.
Failure silence(const QString &who, std::chrono::milliseconds timeout);

} // namespace Simulator::Bus

#endif
