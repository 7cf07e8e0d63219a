// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_LOAD_OPERATION_H
#define GOVD_BENCHMARK_LOAD_OPERATION_H

#include "benchmark/bus/bus.h"

/// A kind of call, and the reply that it must get: a call that fails early is fast and must not
/// count as a result.
class Operation
{
public:
    /// @p name is one of names(); @p service offers the policy interface; @p key is the policy that
    /// is read or written. Throws std::invalid_argument for another name.
    Operation(const std::string &name, std::string service, std::string key);

    /// The names, for the help text.
    static const char *names();

    /// The call with the number @p index. A write changes the value with each call.
    Bus::Message call(sd_bus *bus, unsigned index) const;

    /// Throws std::runtime_error when the outcome of a call, @p reply or @p error, is not what the
    /// operation must get.
    void verify(sd_bus_message *reply, const sd_bus_error *error) const;

private:
    enum class Kind { Id, Read, Write, Unchanged, Refused };

    bool isExpected(sd_bus_message *reply, const sd_bus_error *error) const;

    Kind m_kind;
    std::string m_service;
    std::string m_key;
};

#endif
