// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_BUS_BUS_H
#define GOVD_BENCHMARK_BUS_BUS_H

#include <memory>
#include <string>
#include <systemd/sd-bus.h>

/// sd-bus with owning pointers for its objects and exceptions for its error numbers.
///
/// It is used here instead of Qt's library because it is light: the benchmark itself adds little to
/// the time of a call.
namespace Bus {

struct Release
{
    void operator()(sd_bus *bus) const { sd_bus_flush_close_unref(bus); }
    void operator()(sd_bus_message *message) const { sd_bus_message_unref(message); }
};

using Connection = std::unique_ptr<sd_bus, Release>;
using Message = std::unique_ptr<sd_bus_message, Release>;

/// Returns @p result of the bus library; throws std::system_error, which names @p action, when it
/// is a negative error number.
int check(int result, const char *action);

/// A new connection to the system bus, which has a unique name.
Connection connect();

/// An error of a call, which frees its texts.
class Error
{
public:
    Error() = default;
    ~Error() { sd_bus_error_free(&m_error); }
    Error(const Error &) = delete;
    Error &operator=(const Error &) = delete;
    sd_bus_error *slot() { return &m_error; }

private:
    sd_bus_error m_error{};
};

} // namespace Bus

#endif
