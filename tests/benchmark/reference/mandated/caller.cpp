// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/mandated/caller.h"

#include <grp.h>
#include <pelloraaccesscontrol/accesscontrol.h>
#include <pwd.h>
#include <sys/stat.h>

namespace {

/// What the bus says about a connection; 0 when it knows nothing.
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

/// The group's name first and the user's only if it is needed, each looked up afresh.
bool isPrivileged(uint32_t pid)
{
    char buffer[4096];
    struct stat process;
    if (stat(("/proc/" + std::to_string(pid)).c_str(), &process) != 0)
        return false;
    group groupEntry;
    group *foundGroup = nullptr;
    getgrgid_r(process.st_gid, &groupEntry, buffer, sizeof buffer, &foundGroup);
    if (foundGroup && std::string("privileged") == foundGroup->gr_name)
        return true;
    passwd userEntry;
    passwd *foundUser = nullptr;
    getpwuid_r(process.st_uid, &userEntry, buffer, sizeof buffer, &foundUser);
    return foundUser && std::string("root") == foundUser->pw_name;
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
