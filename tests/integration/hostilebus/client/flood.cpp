// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/flood.h"

#include "client/client.h"

#include <chrono>
#include <cstdio>

#include <unistd.h>

int flood(const char *key, int count)
{
    const Client client;
    const int value = 0;
    for (int i = 0; i < count; ++i)
        client.send(client.write(key, 'b', &value));
    Bus::check(sd_bus_flush(client.bus()), "flushing");
    std::puts("sent");
    std::fflush(stdout);
    while (true)
        pause();
}

int timeReads(const char *key, int count)
{
    using Clock = std::chrono::steady_clock;
    const Client client;
    for (int i = 0; i < count; ++i) {
        const Clock::time_point start = Clock::now();
        const std::string outcome = describe(client.call(client.read(key)));
        const auto time =
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
        std::printf("%s in %ld\n", outcome.c_str(), static_cast<long>(time.count()));
    }
    return 0;
}
