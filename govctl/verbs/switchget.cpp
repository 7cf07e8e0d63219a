// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "request.h"
#include "switches.h"

ExitCode Verbs::switchGet(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Daemon::Reading> reading = daemon.read({});
    if (!reading)
        return output.fail(reading.failure());
    if (const auto failure = checkSwitch(request.arguments.constFirst(), reading->switchKeys))
        return output.fail(*failure);

    const auto switches = daemon.readSwitches(request.arguments);
    if (!switches)
        return output.fail(switches.failure());
    return answer(request, output, switches->constFirst().value);
}
