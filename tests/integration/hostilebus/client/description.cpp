// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/description.h"

#include <regex>

namespace {

/// The value of an attribute in the text of one tag; empty when it has none of that name.
std::string attribute(const std::string &tag, const char *name)
{
    std::smatch match;
    const std::regex pattern(std::string(" ") + name + "=\"([^\"]*)\"");
    return std::regex_search(tag, match, pattern) ? match[1].str() : std::string();
}

} // namespace

std::vector<Member> introspect(const Client &client)
{
    const Bus::Message reply =
        client.call(client.method("org.freedesktop.DBus.Introspectable", "Introspect"));
    const char *begin = nullptr;
    Bus::check(sd_bus_message_read(reply.get(), "s", &begin), "introspection");
    const std::string text = begin;

    static const std::regex tags("<(interface|method|signal|property|arg) [^>]*>");
    std::vector<Member> members;
    std::string interface;
    for (std::sregex_iterator tag(text.begin(), text.end(), tags), end; tag != end; ++tag) {
        const std::string kind = (*tag)[1];
        const std::string line = tag->str();
        if (kind == "interface")
            interface = attribute(line, "name");
        else if (kind != "arg")
            members.push_back({interface, attribute(line, "name"), {}});
        else if (attribute(line, "direction") == "in")
            members.back().in += attribute(line, "type");
    }
    return members;
}
