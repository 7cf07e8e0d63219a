// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PROGRAM_H
#define GOVCTL_PROGRAM_H

#include "result.h"

#include <QStringList>

/// All that main() does. Returns the exit code, or ends the process with it.
int runMain(int argc, char **argv);

/// Runs the verb that @p arguments, without the name of the program, ask for.
ExitCode runProgram(const QStringList &arguments);

#endif
