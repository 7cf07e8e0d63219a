// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_LOAD_LOAD_H
#define GOVD_BENCHMARK_LOAD_LOAD_H

#include "benchmark/load/latencies.h"
#include "benchmark/load/operation.h"

/// Makes @p count calls, each when the reply of the one before has come.
Latencies callInTurn(sd_bus *bus, const Operation &operation, unsigned count);

/// Makes @p count calls and keeps up to @p outstanding of them without a reply; the time of a call
/// is the time from when it was sent until its reply was read.
Latencies callAhead(sd_bus *bus, const Operation &operation, unsigned count, unsigned outstanding);

/// Opens @p count connections that receive every change of a policy, says "ready" on standard
/// output, and reads and drops what comes until the process is ended.
[[noreturn]] void subscribe(unsigned count);

#endif
