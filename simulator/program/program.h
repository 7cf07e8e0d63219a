// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_PROGRAM_H
#define GOVD_SIMULATOR_PROGRAM_PROGRAM_H

#include "commandline/result.h"

#include <QStringList>

namespace Simulator {

/// Does what @p arguments, without the name of the program, ask for.
ExitCode runProgram(const QStringList &arguments);

} // namespace Simulator

#endif
