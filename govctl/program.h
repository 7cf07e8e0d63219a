// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PROGRAM_H
#define GOVCTL_PROGRAM_H

#include "commandline/result.h"

#include <QStringList>

/// Does what @p arguments, without the name of the program, ask for.
ExitCode runProgram(const QStringList &arguments);

#endif
