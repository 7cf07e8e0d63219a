// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_LOAD_LOAD_H
#define GOVD_BENCHMARK_LOAD_LOAD_H

#include "benchmark/load/latencies.h"
#include "benchmark/load/operation.h"

/// Makes @p count calls, one at a time.
Latencies callInTurn(sd_bus *bus, const Operation &operation, unsigned count);

/// Makes @p count calls, with up to @p outstanding at a time. The time of a call runs from sending
/// it until its reply is read.
Latencies callAhead(sd_bus *bus, const Operation &operation, unsigned count, unsigned outstanding);

/// Opens @p count connections that receive every change of a policy, prints "ready", and reads and
/// drops the signals until the process is ended.
[[noreturn]] void subscribe(unsigned count);

#endif
