// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/vanisher.h"

#include "client/client.h"

#include <chrono>
#include <cstdio>

#include <signal.h>
#include <time.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

long microsecondsSince(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
}

/// A timer of the kernel's, so that the end comes at its time whatever the program is doing.
void dieIn(long delay)
{
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer = nullptr;
    timer_create(CLOCK_MONOTONIC, &event, &timer);
    const itimerspec time = {{}, {delay / 1000000, delay % 1000000 * 1000 + 1}};
    timer_settime(timer, 0, &time, nullptr);
}

} // namespace

void writeAndVanish(const char *key, int number, long delay)
{
    const Client client;
    const Bus::Message message = client.write(key, 'i', &number);
    const Clock::time_point start = Clock::now();
    dieIn(delay);
    const std::string outcome = describe(client.call(message));
    std::printf("%s in %ld\n", outcome.c_str(), microsecondsSince(start));
    std::fflush(stdout);
    while (true)
        pause();
}
