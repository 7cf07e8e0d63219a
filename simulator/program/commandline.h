// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_COMMANDLINE_H
#define GOVD_SIMULATOR_PROGRAM_COMMANDLINE_H

#include "simulator/program/verb.h"

namespace Simulator {

/// Reads a command line: @p arguments without the name of the program.
///
/// The arguments of the request are in number and words as the verb wants them. With the option
/// "help" or "version" nothing is checked, and the verb can be missing.
Result<Request> parseCommandLine(const QStringList &arguments);

/// The name of the verb in @p arguments, even if they are wrong otherwise; null when there is none.
QString namedVerb(const QStringList &arguments);

/// The help for @p verb, or for the whole program when it is null.
QString helpText(const Verb *verb);

/// The failure that names an unknown @p name of some @p kind, with the nearest of @p known, or with
/// all of them when none is near.
Failure unknownName(const QString &kind, const QString &name, const QStringList &known);

} // namespace Simulator

#endif
