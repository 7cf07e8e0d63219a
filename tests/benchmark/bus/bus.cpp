// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/bus/bus.h"

#include <system_error>

int Bus::check(int result, const char *action)
{
    if (result < 0)
        throw std::system_error(-result, std::generic_category(), action);
    return result;
}

Bus::Connection Bus::connect()
{
    sd_bus *bus = nullptr;
    check(sd_bus_open_system(&bus), "cannot connect to the system bus");
    return Connection(bus);
}
