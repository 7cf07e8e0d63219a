// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_RANDOMVALUE_H
#define GOVD_TESTS_FUZZ_RANDOMVALUE_H

#include "tests/fuzz/choices.h"

#include <systemd/sd-bus.h>

/// D-Bus values of every type, as deep as the bus allows, chosen by the fuzzer.
namespace RandomValue {

/// The signature of one value. Letters of a signature in the input stand for themselves.
QByteArray signature(Choices &choices);

/// Appends values of the types in @p signature, texts also out of @p known.
void append(sd_bus_message *message, const QByteArray &signature, Choices &choices,
            const QList<QByteArray> &known = {});

/// The values of @p message from where it stands to the end of the present container, with their
/// types, as text: two values are equal when their texts are.
QByteArray describe(sd_bus_message *message);

} // namespace RandomValue

#endif
