// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/mandated/effects.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace {

// Beside the daemon's own, so that both can run at one time.
constexpr char Directory[] = "/var/lib/govd-reference";

void mark(const std::string &path, bool present)
{
    const bool exists = access(path.c_str(), F_OK) == 0;
    if (present && !exists)
        close(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    else if (!present && exists)
        unlink(path.c_str());
}

void markFeature(const char *name, bool enabled)
{
    if (enabled)
        mkdir(Directory, 0755);
    mark(std::string(Directory) + "/" + name, enabled);
}

void switchUsbDevices(sd_bus *bus, bool enabled)
{
    Bus::Error error;
    sd_bus_call_method(bus, "org.brinos.DeviceSentry1", "/org/brinos/DeviceSentry1/Usb",
                       "org.freedesktop.DBus.Properties", "Set", error.slot(), nullptr, "ssv",
                       "org.brinos.DeviceSentry1.UsbManager", "Enabled", "b", int(enabled));
}

const char *text(bool value)
{
    return value ? "true" : "false";
}

int drop(sd_bus_message *, void *, sd_bus_error *)
{
    return 0;
}

} // namespace

void enforce(sd_bus *bus, const std::string &key, bool value)
{
    if (key == "CameraEnabled")
        markFeature("camera_enabled", value);
    else if (key == "UserReportExportEnabled")
        markFeature("user_report_enabled", value);
    else if (key == "DeveloperShellEnabled")
        mark(std::string(Directory) + "/.disable", !value);
    else if (key == "UsbDevicesEnabled")
        switchUsbDevices(bus, value);
}

void recordChange(sd_bus *bus, const std::string &key, bool newValue, bool oldValue)
{
    const std::string line = "Policy " + key + " changed. Old value " + text(oldValue)
        + ". New value " + text(newValue) + ".";
    syslog(LOG_INFO, "%s", line.c_str());
    Bus::check(sd_bus_call_method_async(bus, nullptr, "org.kvtlabs.SystemLogs",
                                        "/org/kvtlabs/SystemLogs", "org.kvtlabs.SystemLogs",
                                        "sendEventStringAlt", drop, nullptr, "sss",
                                        "security-policy-changed", "INFO_LEVEL", line.c_str()),
               "cannot send the event");
}
