// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policystate.h"
#include "request.h"
#include "text.h"

ExitCode Verbs::answer(const Request &request, Output &output, std::optional<bool> value)
{
    const bool isQuestion = request.has(QStringLiteral("quiet"));
    const ExitCode code = isQuestion && !value.value_or(false) ? ExitCode::No : ExitCode::Done;
    if (isQuestion && !output.isJson())
        return code;
    return output.write(code,
                        {{QStringLiteral("key"), request.arguments.constFirst()},
                         {QStringLiteral("value"), valueToJson(value)}},
                        onOff(value) + QLatin1Char('\n'));
}
