// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/mandated/effects.h"

#include "benchmark/reference/markers.h"

#include <syslog.h>

namespace {

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
    if (key == "UsbDevicesEnabled")
        switchUsbDevices(bus, value);
    else
        markPolicy("/var/lib/govd-reference-mandated", key, value);
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
