// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

/// Ends the process before main() unless it runs in the sandbox. Tests remove and write files in
/// the real places, so a test started by hand would harm the machine.
struct SandboxGuard
{
    SandboxGuard()
    {
        if (std::getenv("GOVD_SANDBOX") && access("/run/govd-sandbox", F_OK) == 0)
            return;
        std::fputs("This test runs in the sandbox only: scripts/sandbox -- TEST\n", stderr);
        std::_Exit(EXIT_FAILURE);
    }
};

const SandboxGuard guard;

} // namespace
