// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/program.h"

#include "commandline/program.h"
#include "simulator/program/commandline.h"

namespace Simulator {

ExitCode runProgram(const QStringList &arguments)
{
    const Result<Request> request = parseCommandLine(arguments);
    if (!request) {
        Output output(asksForJson(arguments), namedVerb(arguments));
        return output.finish(output.fail(request.failure()));
    }
    if (request->has(QStringLiteral("help")))
        return printHelp(helpText(request->verb));
    if (request->has(QStringLiteral("version")))
        return printVersion();

    Output output(request->isJson(), request->verb->name);
    const Outcome failure = request->verb->run(*request, output);
    return output.finish(failure ? output.fail(*failure) : ExitCode::Done);
}

} // namespace Simulator
