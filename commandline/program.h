// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMANDLINE_PROGRAM_H
#define GOVD_COMMANDLINE_PROGRAM_H

#include "commandline/result.h"

/// All that main() does: makes the application @p name, and lets @p run do what the arguments,
/// without the name of the program, ask for. Returns the exit code, or ends the process with it.
int runMain(int argc, char **argv, const char *name, ExitCode (*run)(const QStringList &));

/// Prints a help text. It is for people, with --json as without.
ExitCode printHelp(const QString &text);

/// Prints the version, for people as well.
ExitCode printVersion();

#endif
