// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "desiredstate.h"
#include "knownpolicies.h"
#include "request.h"

ExitCode Verbs::exportState(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return output.fail(snapshot.failure());
    const DesiredState state = currentState(*snapshot);
    return output.write(ExitCode::Done, state.toJson(), state.toText(), Output::Lines::Whole);
}
