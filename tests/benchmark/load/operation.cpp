// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/load/operation.h"

#include <map>
#include <stdexcept>

namespace {

constexpr char Path[] = "/org/kvt/PolicyManager";
constexpr char Interface[] = "org.kvt.PolicyManager.Policy";
constexpr char BusName[] = "org.freedesktop.DBus";

Bus::Message newCall(sd_bus *bus, const char *service, const char *path, const char *interface,
                     const char *method)
{
    sd_bus_message *message = nullptr;
    Bus::check(sd_bus_message_new_method_call(bus, &message, service, path, interface, method),
               "cannot make a call");
    return Bus::Message(message);
}

} // namespace

const char *Operation::names()
{
    return "id, read, write, unchanged, refused";
}

Operation::Operation(const std::string &name, std::string service, std::string key)
    : m_service(std::move(service))
    , m_key(std::move(key))
{
    static const std::map<std::string, Kind> kinds{
        {"id", Kind::Id},           {"read", Kind::Read},
        {"write", Kind::Write},     {"unchanged", Kind::Unchanged},
        {"refused", Kind::Refused},
    };
    const auto kind = kinds.find(name);
    if (kind == kinds.end())
        throw std::invalid_argument("no operation \"" + name + "\"; there are " + names());
    m_kind = kind->second;
}

Bus::Message Operation::call(sd_bus *bus, unsigned index) const
{
    if (m_kind == Kind::Id)
        return newCall(bus, BusName, "/org/freedesktop/DBus", BusName, "GetId");
    if (m_kind == Kind::Read) {
        Bus::Message message = newCall(bus, m_service.c_str(), Path, Interface, "KeyValue");
        Bus::check(sd_bus_message_append(message.get(), "s", m_key.c_str()), "cannot fill a call");
        return message;
    }
    const bool value = m_kind != Kind::Write || index % 2 == 1;
    Bus::Message message = newCall(bus, m_service.c_str(), Path, Interface, "SetKeyValue");
    Bus::check(sd_bus_message_append(message.get(), "sv", m_key.c_str(), "b", int(value)),
               "cannot fill a call");
    return message;
}

bool Operation::isExpected(sd_bus_message *reply, const sd_bus_error *error) const
{
    if (m_kind == Kind::Refused)
        return sd_bus_error_has_name(error, SD_BUS_ERROR_ACCESS_DENIED) > 0;
    if (sd_bus_error_is_set(error) > 0)
        return false;
    int value = 0;
    switch (m_kind) {
    case Kind::Read:
        return sd_bus_message_read(reply, "v", "b", &value) > 0;
    case Kind::Write:
    case Kind::Unchanged:
        return sd_bus_message_read(reply, "b", &value) > 0 && value;
    case Kind::Id:
    case Kind::Refused:
        break;
    }
    return true;
}

void Operation::verify(sd_bus_message *reply, const sd_bus_error *error) const
{
    if (isExpected(reply, error))
        return;
    if (sd_bus_error_is_set(error) <= 0)
        throw std::runtime_error("a reply is not the expected one");
    throw std::runtime_error(std::string(error->name) + ": "
                             + (error->message ? error->message : ""));
}
