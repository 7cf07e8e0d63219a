// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_TERMINAL_H
#define GOVCTL_TERMINAL_H

#include <QByteArray>
#include <QString>

/// The streams that the program writes to.
namespace Terminal {

/// Whether standard output is a terminal whose user has nothing against colours.
bool wantsColours();

/// How many letters a line of the terminal at @p descriptor takes; 0 when it is none, or does not
/// tell.
int columns(int descriptor);

/// The lines of @p text, broken at blanks where they are longer than @p columns, unless that is 0.
/// What is broken off stands below the last column of the line. Colours take no place.
QString folded(const QString &text, int columns);

/// Writes without a buffer, so that each result reaches its reader at once and no way to end the
/// program loses one. Returns 0 or the error number.
int write(int descriptor, const QByteArray &bytes);

} // namespace Terminal

#endif
