// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

/// Ends the process before main() unless it runs in the sandbox. Tests write and remove files at
/// their real paths, so a test outside the sandbox would harm the machine.
struct SandboxCheck
{
    SandboxCheck()
    {
        if (std::getenv("GOVD_SANDBOX") && access("/run/govd-sandbox", F_OK) == 0)
            return;
        std::fputs("This test runs in the sandbox only: scripts/sandbox -- TEST\n", stderr);
        std::_Exit(EXIT_FAILURE);
    }
};

const SandboxCheck check;

} // namespace
