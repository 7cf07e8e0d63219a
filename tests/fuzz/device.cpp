// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/fuzz/device.h"

#include "names.h"
#include "tests/fuzz/check.h"
#include "tests/fuzz/randomvalue.h"

namespace {

constexpr char Service[] = "org.kvt.PolicyManager";
constexpr char Object[] = "/org/kvt/PolicyManager";

} // namespace

Device::Device()
{
    m_manager.setupPolicies();
    QDBusConnection bus = QDBusConnection::systemBus();
    require(bus.registerObject(Names::ObjectPath, &m_manager, QDBusConnection::ExportAdaptors)
                && bus.registerService(Names::Service),
            "the daemon is not on the bus");
    m_peer.takeName("org.kvtlabs.SystemLogs");
    requireDone(sd_bus_add_match(m_peer.bus(), nullptr,
                                 "type='signal',path='/org/kvt/PolicyManager'", nullptr, nullptr),
                "signals");
    m_peer.listen([this](sd_bus_message *message) { take(message); });
}

Message Device::call(const char *interface, const char *member)
{
    const QByteArray full = QByteArray(Service) + '.' + interface;
    return m_peer.call(Service, Object, full.constData(), member);
}

Message Device::question(const char *interface, const QByteArray &key)
{
    Message message = call(interface, "KeyValue");
    requireDone(sd_bus_message_append(message.get(), "s", key.constData()), "question");
    return message;
}

std::vector<Message> Device::exchange(const std::vector<const Message *> &calls)
{
    // Shared with the replies that arrive after this has returned.
    const auto replies = std::make_shared<std::vector<Message>>(calls.size());
    for (std::size_t i = 0; i < calls.size(); ++i) {
        m_peer.send(*calls.at(i),
                    [replies, i](Message reply) { replies->at(i) = std::move(reply); });
    }
    Peer::waitFor([&] { return replies->back() != nullptr; }, "the last of several replies");
    std::vector<Message> result(calls.size());
    result.swap(*replies);
    return result;
}

void Device::forget()
{
    m_events.clear();
    m_announcements.clear();
}

void Device::take(sd_bus_message *message)
{
    const char *text = nullptr;
    if (sd_bus_message_is_method_call(message, nullptr, "sendEventStringAlt")) {
        require(sd_bus_message_read(message, "sss", nullptr, nullptr, &text) > 0, "odd event");
        m_events.append(text);
        m_peer.send(Peer::reply(message));
        return;
    }
    for (const char *name : {"PolicyChanged", "SwitchChanged"}) {
        if (sd_bus_message_is_signal(message, nullptr, name))
            takeAnnouncement(message, name);
    }
}

void Device::takeAnnouncement(sd_bus_message *message, const char *name)
{
    const char *key = nullptr;
    require(sd_bus_message_read(message, "s", &key) > 0, "odd announcement");
    m_announcements.append(QByteArray(name) + ' ' + key + ' ' + RandomValue::describe(message));
}
