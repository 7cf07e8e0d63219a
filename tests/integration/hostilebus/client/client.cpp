// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/client.h"

#include <cstring>

namespace {

constexpr char Service[] = "org.kvt.PolicyManager";
constexpr char ObjectPath[] = "/org/kvt/PolicyManager";
constexpr char PolicyInterface[] = "org.kvt.PolicyManager.Policy";
constexpr char ErrorPrefix[] = "org.freedesktop.DBus.Error.";

int takeReply(sd_bus_message *message, void *target, sd_bus_error *)
{
    static_cast<Bus::Message *>(target)->reset(sd_bus_message_ref(message));
    return 0;
}

} // namespace

Client::Client()
    : m_bus(Bus::connect())
{
}

Bus::Message Client::method(const char *interface, const char *member) const
{
    sd_bus_message *message = nullptr;
    Bus::check(
        sd_bus_message_new_method_call(bus(), &message, Service, ObjectPath, interface, member),
        member);
    return Bus::Message(message);
}

Bus::Message Client::read(const char *key) const
{
    Bus::Message message = method(PolicyInterface, "KeyValue");
    Bus::check(sd_bus_message_append_basic(message.get(), 's', key), "key");
    return message;
}

Bus::Message Client::write(const char *key, char type, const void *value) const
{
    Bus::Message message = method(PolicyInterface, "SetKeyValue");
    const char types[] = {type, 0};
    Bus::check(sd_bus_message_append_basic(message.get(), 's', key), "key");
    Bus::check(sd_bus_message_open_container(message.get(), 'v', types), "variant");
    Bus::check(sd_bus_message_append_basic(message.get(), type, value), "value");
    Bus::check(sd_bus_message_close_container(message.get()), "variant");
    return message;
}

Bus::Message Client::call(const Bus::Message &message) const
{
    Bus::Message reply;
    const Slot slot = sendFor(message, &reply);
    while (!reply) {
        if (Bus::check(sd_bus_process(bus(), nullptr), "processing") == 0)
            Bus::check(sd_bus_wait(bus(), UINT64_MAX), "waiting");
    }
    return reply;
}

/// The daemon answers in the order of the calls, so the answer to a later one comes after all that
/// it is going to say before. A ping would not do: its bus library answers that one out of turn.
Bus::Message Client::callOrPass(const Bus::Message &message) const
{
    Bus::Message reply;
    const Slot slot = sendFor(message, &reply);
    call(method("org.kvt.PolicyManager.Switch", "Keys"));
    return reply;
}

Client::Slot Client::sendFor(const Bus::Message &message, Bus::Message *reply) const
{
    sd_bus_slot *slot = nullptr;
    Bus::check(sd_bus_call_async(bus(), &slot, message.get(), takeReply, reply, UINT64_MAX),
               sd_bus_message_get_member(message.get()));
    return Slot(slot);
}

void Client::send(const Bus::Message &message) const
{
    Bus::check(sd_bus_message_set_expect_reply(message.get(), 0), "flags");
    Bus::check(sd_bus_send(bus(), message.get(), nullptr), "sending");
}

std::string describe(const Bus::Message &answer)
{
    if (!answer)
        return "nothing";
    const sd_bus_error *error = sd_bus_message_get_error(answer.get());
    if (!error)
        return std::string("returns ") + sd_bus_message_get_signature(answer.get(), true);
    const size_t length = std::strlen(ErrorPrefix);
    return std::strncmp(error->name, ErrorPrefix, length) == 0 ? error->name + length : error->name;
}
