// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_READING_H
#define GOVD_TESTS_FUZZ_READING_H

#include <QByteArray>

#include <systemd/sd-bus.h>

/// The expected reading of a D-Bus value, computed without the daemon's code.
namespace Reading {

/// Enters the variant at which @p message stands.
void enter(sd_bus_message *message);

/// The boolean reading of the value at which @p message stands, by the documented rule.
bool boolean(sd_bus_message *message);

/// Whether the value that RandomValue describes as @p described is one that no reader could get: an
/// empty signature, also in variants, which the bus library cannot send, or one with a descriptor,
/// of which the daemon would need one for each reader.
bool cannotBeHandedOut(QByteArray described);

} // namespace Reading

#endif
