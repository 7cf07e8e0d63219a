// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/load/latencies.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace {

/// The smallest value that is not below the share @p part of all; 0 when there is none.
double percentile(const std::vector<double> &sorted, double part)
{
    if (sorted.empty())
        return 0;
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
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << "{\"median\": " << percentile(sorted, 0.5)
         << ", \"p99\": " << percentile(sorted, 0.99) << "}";
    return text.str();
}
