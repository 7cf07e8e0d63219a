// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_SCRIPT_H
#define GOVD_SIMULATOR_PROGRAM_SCRIPT_H

#include "simulator/program/verb.h"

namespace Simulator {

/// One line of a script that does something.
struct ScriptLine
{
    int number; ///< counted from 1
    QString text;
    QStringList words; ///< without the name of this program; "govctl" stays
    Request request; ///< unless it is a line for govctl

    bool isForGovctl() const { return words.first() == QLatin1String("govctl"); }
};

/// Reads a script and checks all lines of it but those for govctl. Empty lines, and those that
/// begin with "#", are left out.
Result<QVector<ScriptLine>> readScript(const QString &path);

/// The failure of a line, with its place in front.
Failure atLine(const QString &path, int number, const QString &text, Failure failure);

} // namespace Simulator

#endif
