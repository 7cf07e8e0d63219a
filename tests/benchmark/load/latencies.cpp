// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/load/latencies.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace {

/// The smallest value that is not below the share @p part of all; @p sorted is not empty.
double percentile(const std::vector<double> &sorted, double part)
{
    const auto rank = std::ceil(part * static_cast<double>(sorted.size()));
    return sorted[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

} // namespace

void Latencies::add(Clock::duration duration)
{
    m_microseconds.push_back(std::chrono::duration<double, std::micro>(duration).count());
}

std::string Latencies::json() const
{
    std::vector<double> sorted = m_microseconds;
    std::sort(sorted.begin(), sorted.end());
    const double seconds = std::chrono::duration<double>(m_total).count();
    std::ostringstream text;
    text << std::fixed << std::setprecision(1);
    text << "{\"calls\": " << sorted.size();
    if (!sorted.empty()) {
        text << ", \"median\": " << percentile(sorted, 0.5)
             << ", \"p90\": " << percentile(sorted, 0.9)
             << ", \"p99\": " << percentile(sorted, 0.99)
             << ", \"per_second\": " << static_cast<double>(sorted.size()) / seconds;
    }
    text << "}";
    return text.str();
}
