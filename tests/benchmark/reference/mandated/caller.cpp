// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/mandated/caller.h"

#include "benchmark/reference/privilege.h"

#include <pelloraaccesscontrol/accesscontrol.h>

namespace {

/// The bus's answer about a connection; 0 when the query fails.
uint32_t askBus(sd_bus_message *call, const char *question)
{
    sd_bus_message *reply = nullptr;
    Bus::Error error;
    uint32_t answer = 0;
    sd_bus_call_method(sd_bus_message_get_bus(call), "org.freedesktop.DBus",
                       "/org/freedesktop/DBus", "org.freedesktop.DBus", question, error.slot(),
                       &reply, "s", sd_bus_message_get_sender(call));
    const Bus::Message owner(reply);
    if (reply)
        Bus::check(sd_bus_message_read(reply, "u", &answer), "wrong answer of the bus");
    return answer;
}

} // namespace

bool isCallAllowed(sd_bus_message *call)
{
    const uint32_t pid = askBus(call, "GetConnectionUnixProcessID");
    if (isPrivileged(pid))
        return true;
    const uint32_t user = askBus(call, "GetConnectionUnixUser");
    if (pellora_access_control_hasgroup(user, "pellora-mdm"))
        return true;
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED,
                               "PID %u is not in pellora-mdm group", pid);
    return false;
}
