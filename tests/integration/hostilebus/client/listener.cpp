// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/listener.h"

#include "benchmark/bus/bus.h"

#include <cstdio>

namespace {

constexpr char Name[] = "org.kvtlabs.SystemLogs";
constexpr char Rule[] =
    "type='signal',interface='org.kvt.PolicyManager.Policy',member='PolicyChanged'";

int takeSignal(sd_bus_message *message, void *, sd_bus_error *)
{
    const char *key = nullptr;
    int value = 0;
    Bus::check(sd_bus_message_read(message, "sv", &key, "b", &value), "signal");
    std::printf("signal %s %s\n", key, value ? "true" : "false");
    return 0;
}

int takeEvent(sd_bus_message *message, void *, sd_bus_error *)
{
    if (!sd_bus_message_is_method_call(message, Name, "sendEventStringAlt"))
        return 0;
    const char *kind = nullptr, *level = nullptr, *text = nullptr;
    Bus::check(sd_bus_message_read(message, "sss", &kind, &level, &text), "event");
    std::printf("event %s\n", text);
    return sd_bus_reply_method_return(message, nullptr);
}

} // namespace

int listen()
{
    const Bus::Connection bus = Bus::connect();
    Bus::check(sd_bus_add_match(bus.get(), nullptr, Rule, takeSignal, nullptr), "match");
    Bus::check(sd_bus_add_object(bus.get(), nullptr, "/org/kvtlabs/SystemLogs", takeEvent, nullptr),
               "object");
    Bus::check(sd_bus_request_name(bus.get(), Name, 0), Name);
    std::puts("ready");
    while (true) {
        if (Bus::check(sd_bus_process(bus.get(), nullptr), "processing") == 0) {
            std::fflush(stdout);
            Bus::check(sd_bus_wait(bus.get(), UINT64_MAX), "waiting");
        }
    }
}
