// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/program.h"

#include "simulator/program/commandline.h"

#include <QCoreApplication>

namespace Simulator {
namespace {

/// Help and version are for people, with --json as without.
ExitCode inform(const QString &text)
{
    Console console(false, {});
    console.write({}, text);
    return console.finish(ExitCode::Done);
}

} // namespace

ExitCode runProgram(const QStringList &arguments)
{
    const Result<Request> request = parseCommandLine(arguments);
    if (!request) {
        Console console(asksForJson(arguments), namedVerb(arguments));
        console.fail(request.failure());
        return console.finish(request.failure().code);
    }
    if (request->has(QStringLiteral("help")))
        return inform(helpText(request->verb));
    if (request->has(QStringLiteral("version")))
        return inform(QStringLiteral("govd-sim %1\n").arg(QCoreApplication::applicationVersion()));

    Console console(request->isJson(), request->verb->name);
    const Outcome failure = request->verb->run(*request, console);
    if (failure)
        console.fail(*failure);
    return console.finish(failure ? failure->code : ExitCode::Done);
}

} // namespace Simulator
