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

/// Whether the value that RandomValue describes as @p described is the one that the bus library
/// receives and cannot send, so that no reader would ever get an answer: "g", or "v" around it.
bool isEmptySignature(QByteArray described);

} // namespace Reading

#endif
