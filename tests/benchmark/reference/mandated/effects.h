// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_MANDATED_EFFECTS_H
#define GOVD_BENCHMARK_REFERENCE_MANDATED_EFFECTS_H

#include "benchmark/bus/bus.h"

/// Enforces the policies of the direct route as the daemon does: marker files, and the call to the
/// service of USB devices, which is absent in a benchmark.
void enforce(sd_bus *bus, const std::string &key, bool value);

/// The line in the system log and the event for the system-log service, whose reply is dropped.
void recordChange(sd_bus *bus, const std::string &key, bool newValue, bool oldValue);

#endif
