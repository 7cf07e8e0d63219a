// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_ARGUMENTS_H
#define GOVD_TESTS_HOSTILEBUS_ARGUMENTS_H

#include <functional>
#include <string>
#include <vector>

#include <systemd/sd-bus.h>

/// One argument of a call: its type, and how it gets into a message.
struct Argument
{
    std::string type;
    std::function<int(sd_bus_message *)> append;
};

/// One or more arguments of every type of the bus, right and odd ones, none longer than 10 kB.
std::vector<Argument> smallArguments();

/// Arguments of a mebibyte each.
std::vector<Argument> largeArguments();

/// An argument of one of the types of the daemon's methods that makes sense there.
Argument sensibleArgument(char type);

#endif
