// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_LOAD_LATENCIES_H
#define GOVD_BENCHMARK_LOAD_LATENCIES_H

#include <chrono>
#include <string>
#include <vector>

using Clock = std::chrono::steady_clock;

/// The latencies of calls.
class Latencies
{
public:
    /// Reserves room for @p count calls, so that adding one allocates nothing.
    explicit Latencies(std::size_t count) { m_microseconds.reserve(count); }

    void add(Clock::duration duration);

    /// One line of JSON: median and p99 in microseconds.
    std::string json() const;

private:
    std::vector<double> m_microseconds;
};

#endif
