// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_CLIENT_H
#define GOVD_TESTS_HOSTILEBUS_CLIENT_H

#include "benchmark/bus/bus.h"

#include <memory>
#include <string>

/// A client of the daemon that is cheap to make and to run by the hundred. Every function throws
/// std::system_error when the bus library fails.
class Client
{
public:
    Client();

    sd_bus *bus() const { return m_bus.get(); }

    /// An empty call of a method of the daemon's object.
    Bus::Message method(const char *interface, const char *member) const;

    /// A call that reads a policy.
    Bus::Message read(const char *key) const;

    /// A call that gives a policy a value of the basic type @p type.
    Bus::Message write(const char *key, char type, const void *value) const;

    /// Makes a call that is always answered, perhaps by an error, and returns the answer.
    Bus::Message call(const Bus::Message &message) const;

    /// Makes a call that perhaps nobody answers. Nothing when the daemon has answered a later call
    /// but not this one.
    Bus::Message callOrPass(const Bus::Message &message) const;

    /// Sends a call whose answer nobody waits for.
    void send(const Bus::Message &message) const;

private:
    struct EndOfSlot
    {
        void operator()(sd_bus_slot *slot) const { sd_bus_slot_unref(slot); }
    };
    using Slot = std::unique_ptr<sd_bus_slot, EndOfSlot>;

    Slot sendFor(const Bus::Message &message, Bus::Message *reply) const;

    Bus::Connection m_bus;
};

/// An answer in words: "returns" and its types, or the name of the error, without the beginning
/// that those of the bus have in common. "nothing" for none.
std::string describe(const Bus::Message &answer);

#endif
