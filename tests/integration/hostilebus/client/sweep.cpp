// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/sweep.h"

#include "client/arguments.h"
#include "client/description.h"

#include <cstdio>

namespace {

using Arguments = std::vector<Argument>;

/// The outcome of one call. A connection of its own for each, because the bus counts calls without
/// an answer against the caller.
std::string outcome(const Member &member, const Arguments &arguments)
{
    const Client client;
    const Bus::Message message = client.method(member.interface.c_str(), member.name.c_str());
    for (const Argument &argument : arguments)
        Bus::check(argument.append(message.get()), argument.type.c_str());
    return describe(client.callOrPass(message));
}

void report(const Member &member, const Arguments &arguments)
{
    std::string types;
    for (const Argument &argument : arguments)
        types += argument.type;
    std::printf("%s\t%s\t%s\t%s\n", member.fullName().c_str(), member.in.c_str(), types.c_str(),
                outcome(member, arguments).c_str());
}

} // namespace

int callSensibly()
{
    for (const Member &member : introspect(Client())) {
        Arguments arguments;
        for (const char type : member.in)
            arguments.push_back(sensibleArgument(type));
        std::printf("%s\t%s\n", member.fullName().c_str(), outcome(member, arguments).c_str());
    }
    return 0;
}

int callWildly()
{
    Arguments all = smallArguments();
    for (const Argument &each : largeArguments())
        all.push_back(each);
    const Argument key = sensibleArgument('s');
    const Argument value = sensibleArgument('v');
    for (const Member &member : introspect(Client())) {
        report(member, {});
        report(member, {key, value, value});
        for (const Argument &first : all) {
            report(member, {first});
            report(member, {key, first});
            report(member, {first, value});
            report(member, {key, key, first});
        }
    }
    return 0;
}
