// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/flood.h"
#include "client/listener.h"
#include "client/sweep.h"
#include "client/vanisher.h"
#include "client/worker.h"

#include <cstdio>
#include <exception>

namespace {

using Arguments = std::vector<std::string>;

int workAsTold(const Arguments &arguments)
{
    Work task;
    task.seed = static_cast<unsigned>(std::stoul(arguments.at(1)));
    task.firstNumber = std::stoi(arguments.at(2));
    task.calls = std::stoi(arguments.at(3));
    task.odd = std::stoi(arguments.at(4));
    task.keys.assign(arguments.begin() + 5, arguments.end());
    return work(task);
}

int run(const Arguments &arguments)
{
    const std::string &verb = arguments.at(0);
    if (verb == "sensibly")
        return callSensibly();
    if (verb == "wildly")
        return callWildly();
    if (verb == "work")
        return workAsTold(arguments);
    if (verb == "listen")
        return listen();
    if (verb == "flood")
        return flood(arguments.at(1).c_str(), std::stoi(arguments.at(2)));
    if (verb == "read")
        return timeReads(arguments.at(1).c_str(), std::stoi(arguments.at(2)));
    if (verb == "vanish")
        writeAndVanish(arguments.at(1).c_str(), std::stoi(arguments.at(2)),
                       std::stol(arguments.at(3)));
    std::fprintf(stderr, "unknown verb \"%s\"\n", verb.c_str());
    return 1;
}

} // namespace

/// govd-test-crowd VERB [ARGUMENT...]
///
/// A client of the daemon for tests in which there are many. Its verbs are the functions of the
/// other files of this folder.
int main(int argc, char **argv)
{
    try {
        return run(Arguments(argv + 1, argv + argc));
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
