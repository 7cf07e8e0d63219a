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

/// A connection to the system bus that can send anything that the bus lets through. It shares the
/// thread, but no code, with what is tested.
class Peer : public QObject
{
    Q_OBJECT

public:
    Peer();
    ~Peer() override;

    sd_bus *bus() const { return m_bus; }

    /// Owns @p name, at the latest when its owner of now has left the bus.
    void takeName(const char *name);

    /// A call, a signal or a reply, still without its content.
    Message call(const char *service, const char *path, const char *interface, const char *member);
    Message signal(const char *path, const char *interface, const char *member);
    static Message reply(sd_bus_message *call);

    /// Sends @p message and waits for nothing.
    void send(const Message &message);

    /// Sends the call @p message and hands its reply, an error too, to @p take when it comes.
    void send(const Message &message, const std::function<void(Message)> &take);

    /// Has @p take see every call and signal that arrives; the calls it answers itself.
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
