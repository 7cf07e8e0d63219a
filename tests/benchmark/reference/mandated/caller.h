// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_MANDATED_CALLER_H
#define GOVD_BENCHMARK_REFERENCE_MANDATED_CALLER_H

#include "benchmark/bus/bus.h"

/// Whether the sender of @p call may write, by the daemon's rules. If not, an error reply has been
/// sent.
bool isCallAllowed(sd_bus_message *call);

#endif
