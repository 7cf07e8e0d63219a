// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/fuzz/peer.h"

#include "tests/fuzz/check.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>

namespace {

constexpr int Deadline = 20000;

using Taker = std::function<void(Message)>;

/// Blocks SIGALRM, which the fuzzer uses for its time limit: the bus library fails when a signal
/// interrupts its wait for the bus.
class Undisturbed
{
public:
    Undisturbed()
    {
        sigset_t alarm;
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        pthread_sigmask(SIG_BLOCK, &alarm, &m_before);
    }
    ~Undisturbed() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    Q_DISABLE_COPY(Undisturbed)

private:
    sigset_t m_before;
};

} // namespace

Peer::Peer()
{
    requireDone(sd_bus_open_system(&m_bus), "connect");
    requireDone(sd_bus_add_filter(m_bus, nullptr, takeAny, this), "filter");
    auto *notifier = new QSocketNotifier(sd_bus_get_fd(m_bus), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { process(); });
}

Peer::~Peer()
{
    const Undisturbed undisturbed;
    sd_bus_flush_close_unref(m_bus);
}

void Peer::takeName(const char *name)
{
    const Undisturbed undisturbed;
    requireDone(sd_bus_request_name(m_bus, name, SD_BUS_NAME_QUEUE), "name");
}

Message Peer::call(const char *service, const char *path, const char *interface, const char *member)
{
    sd_bus_message *message = nullptr;
    requireDone(sd_bus_message_new_method_call(m_bus, &message, service, path, interface, member),
                "call");
    return Message(message);
}

Message Peer::signal(const char *path, const char *interface, const char *member)
{
    sd_bus_message *message = nullptr;
    requireDone(sd_bus_message_new_signal(m_bus, &message, path, interface, member), "signal");
    return Message(message);
}

Message Peer::reply(sd_bus_message *call)
{
    sd_bus_message *message = nullptr;
    requireDone(sd_bus_message_new_method_return(call, &message), "reply");
    return Message(message);
}

void Peer::send(const Message &message)
{
    requireDone(sd_bus_send(m_bus, message.get(), nullptr), "send");
    flush();
}

void Peer::send(const Message &message, const std::function<void(Message)> &take)
{
    const auto destroy = [](void *taker) {
        delete static_cast<Taker *>(taker);
    };
    auto *taker = new Taker(take);
    sd_bus_slot *slot = nullptr;
    requireDone(sd_bus_call_async(m_bus, &slot, message.get(), takeReply, taker, 0), "send");
    sd_bus_slot_set_destroy_callback(slot, destroy);
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    flush();
}

void Peer::waitFor(const std::function<bool()> &condition, const char *what)
{
    QTimer alarm; // ends the wait for events
    alarm.start(Deadline);
    QElapsedTimer time;
    time.start();
    while (!condition()) {
        require(!time.hasExpired(Deadline), QByteArray("waited in vain for ") + what);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

int Peer::takeReply(sd_bus_message *reply, void *data, sd_bus_error *)
{
    (*static_cast<Taker *>(data))(Message(sd_bus_message_ref(reply)));
    return 0;
}

int Peer::takeAny(sd_bus_message *message, void *data, sd_bus_error *)
{
    auto *peer = static_cast<Peer *>(data);
    uint8_t type = 0;
    requireDone(sd_bus_message_get_type(message, &type), "type");
    const bool isForUs = type == SD_BUS_MESSAGE_METHOD_CALL || type == SD_BUS_MESSAGE_SIGNAL;
    if (!isForUs || !peer->m_listener)
        return 0;
    peer->m_listener(message);
    return 1;
}

void Peer::flush()
{
    const Undisturbed undisturbed;
    requireDone(sd_bus_flush(m_bus), "flush");
}

void Peer::process()
{
    int result = 0;
    while ((result = sd_bus_process(m_bus, nullptr)) > 0)
        continue;
    requireDone(result, "process");
}
