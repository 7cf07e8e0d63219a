// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policystate.h"
#include "request.h"
#include "text.h"

ExitCode Verbs::get(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Daemon::Reading> reading = daemon.read(request.arguments);
    if (!reading)
        return output.fail(reading.failure());

    return answer(request, output, reading->values.constFirst());
}
