// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMON_TERMINAL_H
#define GOVD_COMMON_TERMINAL_H

#include <QByteArray>

/// What the command-line programs share about the streams that they write to.
namespace Terminal {

/// Whether standard output is a terminal whose user has nothing against colours.
bool wantsColours();

/// Writes without a buffer, so that each result reaches its reader at once and no way to end the
/// program loses one. Returns 0 or the error number.
int write(int descriptor, const QByteArray &bytes);

} // namespace Terminal

#endif
