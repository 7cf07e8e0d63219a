// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/mandated/service.h"

#include "benchmark/reference/keyfile.h"
#include "benchmark/reference/mandated/caller.h"
#include "benchmark/reference/mandated/effects.h"

namespace {

constexpr char Path[] = "/org/kvt/PolicyManager";
constexpr char Interface[] = "org.kvt.PolicyManager.Policy";
constexpr char BusName[] = "org.freedesktop.DBus";
constexpr char BusPath[] = "/org/freedesktop/DBus";

} // namespace

const sd_bus_vtable Service::Methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("KeyValue", "s", "v", Service::keyValue, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SetKeyValue", "sv", "b", Service::setKeyValue, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("PolicyChanged", "sv", 0),
    SD_BUS_VTABLE_END,
};

Service::Service(const std::string &name, std::string file, const std::vector<std::string> &keys)
    : m_bus(Bus::connect())
    , m_file(std::move(file))
{
    followNames();
    const std::map<std::string, bool> loaded = loadValues(m_file);
    for (const std::string &key : keys) {
        const auto value = loaded.find(key);
        store(key, value == loaded.end() ? defaultOf(key) : value->second);
    }
    for (const auto &[key, value] : m_values)
        enforce(m_bus.get(), key, value);
    Bus::check(sd_bus_add_object_vtable(m_bus.get(), nullptr, Path, Interface, Methods, this),
               "cannot offer the object");
    Bus::check(sd_bus_request_name(m_bus.get(), name.c_str(), 0), "cannot take the name");
}

/// The reply is not used: the services whose names could be in it are all absent here.
void Service::followNames()
{
    Bus::check(sd_bus_match_signal(m_bus.get(), nullptr, BusName, BusPath, BusName,
                                   "NameOwnerChanged", nullptr, nullptr),
               "cannot follow names");
    sd_bus_message *names = nullptr;
    Bus::check(sd_bus_call_method(m_bus.get(), BusName, BusPath, BusName, "ListNames", nullptr,
                                  &names, nullptr),
               "cannot list names");
    Bus::Message owner(names);
}

void Service::store(const std::string &key, bool value)
{
    saveKeyValue(m_file, key, value);
    m_values[key] = value;
    enforce(m_bus.get(), key, value);
}

bool Service::defaultOf(const std::string &key)
{
    if (key != "UserReportExportEnabled")
        return true;
    Bus::Error error;
    int isCertified = 1;
    sd_bus_get_property_trivial(m_bus.get(), "org.kvt.deviceinfo", "/org/kvt/deviceinfo/Features",
                                "org.kvt.deviceinfo.Features", "isOsCertified", error.slot(), 'b',
                                &isCertified);
    return !isCertified;
}

int Service::keyValue(sd_bus_message *call, void *userData, sd_bus_error *)
{
    return static_cast<Service *>(userData)->read(call);
}

int Service::setKeyValue(sd_bus_message *call, void *userData, sd_bus_error *)
{
    return static_cast<Service *>(userData)->write(call);
}

int Service::read(sd_bus_message *call)
{
    const char *key = nullptr;
    Bus::check(sd_bus_message_read(call, "s", &key), "wrong call");
    const auto value = m_values.find(key);
    return sd_bus_reply_method_return(call, "v", "b",
                                      int(value != m_values.end() && value->second));
}

int Service::write(sd_bus_message *call)
{
    const char *key = nullptr;
    int value = 0;
    Bus::check(sd_bus_message_read(call, "sv", &key, "b", &value), "wrong call");
    if (!isCallAllowed(call))
        return 1;
    saveKeyValue(m_file, key, value);
    recordChange(m_bus.get(), key, value, m_values[key]);
    if (m_values[key] != bool(value) && !update(call, key, value))
        return 1;
    return sd_bus_reply_method_return(call, "b", 1);
}

bool Service::update(sd_bus_message *call, const std::string &key, bool value)
{
    m_values[key] = value;
    const bool isAllowed = isCallAllowed(call);
    if (isAllowed)
        enforce(m_bus.get(), key, value);
    Bus::check(sd_bus_emit_signal(m_bus.get(), Path, Interface, "PolicyChanged", "sv", key.c_str(),
                                  "b", int(value)),
               "cannot announce a change");
    return isAllowed;
}

void Service::run()
{
    for (;;) {
        while (Bus::check(sd_bus_process(m_bus.get(), nullptr), "cannot read from the bus") > 0) { }
        Bus::check(sd_bus_wait(m_bus.get(), UINT64_MAX), "cannot wait for the bus");
    }
}
