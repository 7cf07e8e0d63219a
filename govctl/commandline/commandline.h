// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_COMMANDLINE_H
#define GOVCTL_COMMANDLINE_H

#include "verb.h"

/// Reads a command line: @p arguments without the name of the program.
///
/// Options may stand before and after the verb. The arguments of the request have the right number
/// and the right kind; keys of switches are not checked, because only the daemon knows them. A line
/// without a verb is that of the summary. With the option "help" or "version" nothing else is
/// checked, and the verb is null when none is named.
Result<Request> parseCommandLine(const QStringList &arguments);

/// The name of the verb in @p arguments, even if they are wrong otherwise; null when there is none.
QString namedVerb(const QStringList &arguments);

/// Whether @p arguments ask for JSON, even if they are wrong in other respects.
bool asksForJson(const QStringList &arguments);

/// The help for @p verb, or for the whole program when it is null.
QString helpText(const Verb *verb);

#endif
