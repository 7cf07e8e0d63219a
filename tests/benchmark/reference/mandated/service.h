// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_MANDATED_SERVICE_H
#define GOVD_BENCHMARK_REFERENCE_MANDATED_SERVICE_H

#include "benchmark/bus/bus.h"

#include <unordered_map>
#include <vector>

/// The policy interface with exactly the steps that the daemon must take for a read, for a write
/// and at start, on light libraries: the cost of the steps themselves.
class Service
{
public:
    /// Loads @p file, enforces the values of @p keys, with a default for those that the file does
    /// not hold, and then takes the bus name @p name.
    Service(const std::string &name, std::string file, const std::vector<std::string> &keys);

    /// Serves until the process is ended.
    [[noreturn]] void run();

private:
    static const sd_bus_vtable Methods[];
    static int keyValue(sd_bus_message *call, void *userData, sd_bus_error *error);
    static int setKeyValue(sd_bus_message *call, void *userData, sd_bus_error *error);

    void followNames();
    void store(const std::string &key, bool value);
    bool defaultOf(const std::string &key);
    int read(sd_bus_message *call);
    int write(sd_bus_message *call);
    bool update(sd_bus_message *call, const std::string &key, bool value);

    Bus::Connection m_bus;
    std::string m_file;
    std::unordered_map<std::string, bool> m_values;
};

#endif
