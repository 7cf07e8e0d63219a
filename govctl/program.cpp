// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/program.h"

#include "govctl/commandline.h"
#include "govctl/text.h"

namespace {

/// Help and version are for people, with --json as without.
ExitCode inform(const QString &text)
{
    Output output(false, {});
    return output.finish(output.write(ExitCode::Done, {}, text));
}

} // namespace

ExitCode runProgram(const QStringList &arguments)
{
    const Result<Request> request = parseCommandLine(arguments);
    if (!request) {
        Output output(asksForJson(arguments), namedVerb(arguments));
        return output.finish(output.fail(request.failure()));
    }
    if (request->has(QStringLiteral("help")))
        return inform(helpText(request->verb));
    if (request->has(QStringLiteral("version")))
        return inform(QStringLiteral("govctl %1\n").arg(QCoreApplication::applicationVersion()));

    Output output(request->json, request->verb->name);
    return output.finish(request->verb->run(*request, output));
}
