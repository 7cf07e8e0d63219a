// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_LOAD_SUBSCRIBE_H
#define GOVD_BENCHMARK_LOAD_SUBSCRIBE_H

/// Opens @p count connections that receive every change of a policy, prints "ready", and reads and
/// drops the signals until the process is ended.
[[noreturn]] void subscribe(unsigned count);

#endif
