// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_DESCRIPTION_H
#define GOVD_TESTS_HOSTILEBUS_DESCRIPTION_H

#include "client/client.h"

#include <string>
#include <vector>

/// A method, signal or property as the daemon's object describes it.
struct Member
{
    std::string interface;
    std::string name;
    std::string in; ///< types of what a method takes; empty for others

    std::string fullName() const { return interface + '.' + name; }
};

/// All members of all interfaces of the object, in its own order.
std::vector<Member> introspect(const Client &client);

#endif
