// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_PEER_H
#define GOVD_TESTS_FUZZ_PEER_H

#include <QObject>

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

struct MessageDeleter
{
    void operator()(sd_bus_message *message) const { sd_bus_message_unref(message); }
};

using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

/// A connection to the system bus that can send any message that the bus accepts. It shares the
/// thread, but no code, with the tested program.
class Peer : public QObject
{
    Q_OBJECT

public:
    Peer();
    ~Peer() override;

    sd_bus *bus() const { return m_bus; }

    /// Owns @p name; if it has an owner, as soon as that one has left the bus.
    void takeName(const char *name);

    /// A call, a signal or a reply, still without its content.
    Message call(const char *service, const char *path, const char *interface, const char *member);
    Message signal(const char *path, const char *interface, const char *member);
    static Message reply(sd_bus_message *call);

    /// Sends @p message without waiting for a reply.
    void send(const Message &message);

    /// Sends the call @p message; passes its reply, an error too, to @p take when it comes.
    void send(const Message &message, const std::function<void(Message)> &take);

    /// Passes every call and signal that arrives to @p take, which replies to calls itself.
    void listen(const std::function<void(sd_bus_message *)> &take) { m_listener = take; }

    /// Runs the event loop until @p condition holds; ends the process if that takes too long.
    static void waitFor(const std::function<bool()> &condition, const char *what);

private:
    static int takeReply(sd_bus_message *reply, void *data, sd_bus_error *error);
    static int takeAny(sd_bus_message *message, void *data, sd_bus_error *error);
    void flush();
    void process();

    sd_bus *m_bus = nullptr;
    std::function<void(sd_bus_message *)> m_listener;
};

#endif
