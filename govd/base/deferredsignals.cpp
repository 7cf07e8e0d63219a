// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "deferredsignals.h"

#include <csignal>

namespace {

constexpr int Deferred[] = {SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t arrived = 0; ///< number of the last signal; 0 for none

void note(int number)
{
    arrived = number;
}

void setHandlers(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : Deferred)
        sigaction(number, &action, nullptr);
}

} // namespace

DeferredSignals::DeferredSignals()
{
    setHandlers(note);
}

DeferredSignals::~DeferredSignals()
{
    setHandlers(SIG_DFL);
    if (arrived != 0)
        (void)raise(arrived);
}
