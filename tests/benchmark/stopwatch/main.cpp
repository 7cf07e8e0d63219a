// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/bus/bus.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

int note(sd_bus_message *, void *userData, sd_bus_error *)
{
    *static_cast<bool *>(userData) = true;
    return 0;
}

pid_t start(char **command)
{
    const pid_t child = vfork();
    if (child == 0) {
        execvp(command[0], command);
        _exit(127);
    }
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "cannot start a process");
    return child;
}

/// Waits until the name has an owner; throws when the process @p child has ended before.
void waitForOwner(sd_bus *bus, const bool &isOwned, pid_t child)
{
    constexpr uint64_t Patience = 100000; // microseconds
    while (!isOwned) {
        if (Bus::check(sd_bus_process(bus, nullptr), "cannot read from the bus") > 0)
            continue;
        if (waitpid(child, nullptr, WNOHANG) == child)
            throw std::runtime_error("the command has ended without taking the name");
        Bus::check(sd_bus_wait(bus, Patience), "cannot wait for the bus");
    }
}

double measure(const std::string &name, char **command)
{
    const Bus::Connection bus = Bus::connect();
    bool isOwned = false;
    const std::string rule = "type='signal',sender='org.freedesktop.DBus',"
                             "member='NameOwnerChanged',arg0='"
        + name + "'";
    Bus::check(sd_bus_add_match(bus.get(), nullptr, rule.c_str(), note, &isOwned),
               "cannot follow the name");
    const Clock::time_point begin = Clock::now();
    const pid_t child = start(command);
    waitForOwner(bus.get(), isOwned, child);
    const Clock::duration taken = Clock::now() - begin;
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
    return std::chrono::duration<double, std::micro>(taken).count();
}

} // namespace

/// govd-stopwatch NAME COMMAND [ARGUMENT...]: starts the command, prints after how many
/// microseconds it owns the bus name, and ends it.
int main(int argc, char **argv)
{
    try {
        if (argc < 3)
            throw std::invalid_argument("a bus name and a command are needed");
        std::cout << measure(argv[1], argv + 2) << std::endl;
    } catch (const std::exception &error) {
        std::cerr << "govd-stopwatch: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
