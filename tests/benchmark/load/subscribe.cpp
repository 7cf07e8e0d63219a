// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/load/subscribe.h"

#include "benchmark/bus/bus.h"

#include <iostream>
#include <poll.h>
#include <vector>

namespace {

Bus::Connection newSubscriber()
{
    Bus::Connection bus = Bus::connect();
    Bus::check(sd_bus_match_signal(bus.get(), nullptr, nullptr, "/org/kvt/PolicyManager",
                                   "org.kvt.PolicyManager.Policy", "PolicyChanged", nullptr,
                                   nullptr),
               "cannot subscribe");
    return bus;
}

} // namespace

void subscribe(unsigned count)
{
    std::vector<Bus::Connection> subscribers;
    std::vector<pollfd> sockets;
    for (unsigned index = 0; index < count; ++index) {
        subscribers.push_back(newSubscriber());
        sockets.push_back({sd_bus_get_fd(subscribers.back().get()), POLLIN, 0});
    }
    std::cout << "ready" << std::endl;
    for (;;) {
        poll(sockets.data(), sockets.size(), -1);
        for (std::size_t index = 0; index < sockets.size(); ++index) {
            if (!sockets[index].revents)
                continue;
            while (Bus::check(sd_bus_process(subscribers[index].get(), nullptr), "bus lost") > 0) {
            }
        }
    }
}
