// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/load/operation.h"
#include "benchmark/load/subscribe.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <getopt.h>
#include <iostream>
#include <vector>

namespace {

struct Arguments
{
    std::string service = "org.kvt.PolicyManager";
    std::string key = "LocationEnabled";
    unsigned calls = 1000;
    unsigned warmUp = 100;
    unsigned subscribers = 0;
    std::string operation;
};

void printUsage()
{
    std::cout << "Usage: govd-load [OPTION...] OPERATION\n"
                 "\n"
                 "Calls a policy service or the bus again and again and prints how long it took.\n"
                 "Operations: "
              << Operation::names()
              << "\n\n"
                 "  --service NAME     bus name of the service\n"
                 "  --key KEY          policy that is read or written\n"
                 "  --calls N          how many calls are measured\n"
                 "  --warm-up N        how many are made before\n"
                 "  --subscribers N    make no calls, but receive changes on N connections\n";
}

Arguments parse(int argc, char **argv)
{
    static const option options[] = {
        {"service", required_argument, nullptr, 's'},
        {"key", required_argument, nullptr, 'k'},
        {"calls", required_argument, nullptr, 'c'},
        {"warm-up", required_argument, nullptr, 'w'},
        {"subscribers", required_argument, nullptr, 'n'},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
    };
    Arguments result;
    const auto number = [] {
        return static_cast<unsigned>(std::stoul(optarg));
    };
    for (int found; (found = getopt_long(argc, argv, "", options, nullptr)) != -1;) {
        switch (found) {
        case 's':
            result.service = optarg;
            break;
        case 'k':
            result.key = optarg;
            break;
        case 'c':
            result.calls = number();
            break;
        case 'w':
            result.warmUp = number();
            break;
        case 'n':
            result.subscribers = number();
            break;
        default:
            printUsage();
            std::exit(found == 'h' ? 0 : 2);
        }
    }
    if (optind < argc)
        result.operation = argv[optind];
    return result;
}

/// Makes so many calls, one at a time; the latency of each in microseconds, sorted.
std::vector<double> measure(sd_bus *bus, const Operation &operation, unsigned count)
{
    using Clock = std::chrono::steady_clock;
    constexpr uint64_t Forever = UINT64_MAX;
    std::vector<double> latencies(count);
    for (unsigned index = 0; index < count; ++index) {
        const Clock::time_point sent = Clock::now();
        const Bus::Message message = operation.call(bus, index);
        Bus::Error error;
        sd_bus_message *reply = nullptr;
        sd_bus_call(bus, message.get(), Forever, error.slot(), &reply);
        latencies[index] = std::chrono::duration<double, std::micro>(Clock::now() - sent).count();
        const Bus::Message owner(reply);
        operation.verify(reply, error.slot());
    }
    std::sort(latencies.begin(), latencies.end());
    return latencies;
}

/// The smallest value that is not below the share @p part of all; 0 when there is none.
double percentile(const std::vector<double> &sorted, double part)
{
    if (sorted.empty())
        return 0;
    const auto rank = std::ceil(part * static_cast<double>(sorted.size()));
    return sorted[static_cast<std::size_t>(rank) - 1];
}

void run(const Arguments &arguments)
{
    if (arguments.subscribers > 0)
        subscribe(arguments.subscribers);
    const Operation operation(arguments.operation, arguments.service, arguments.key);
    const Bus::Connection bus = Bus::connect();
    measure(bus.get(), operation, arguments.warmUp);
    const std::vector<double> latencies = measure(bus.get(), operation, arguments.calls);
    std::cout << "{\"median\": " << percentile(latencies, 0.5)
              << ", \"p99\": " << percentile(latencies, 0.99) << "}" << std::endl;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        run(parse(argc, argv));
    } catch (const std::exception &error) {
        std::cerr << "govd-load: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
