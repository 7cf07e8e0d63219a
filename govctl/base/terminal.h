// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_TERMINAL_H
#define GOVCTL_TERMINAL_H

#include <QByteArray>
#include <QString>

/// Standard output and standard error.
namespace Terminal {

/// Whether standard output is a terminal and neither NO_COLOR nor TERM forbids colours.
bool wantsColours();

/// The width in columns of the terminal at @p descriptor; 0 when it is no terminal or the width is
/// not known.
int columns(int descriptor);

/// The lines of @p text, wrapped at blanks where they are longer than @p columns, unless that is 0.
/// Continuation lines are indented to the line's last column. Colour codes have no width.
QString folded(const QString &text, int columns);

/// Writes without a buffer, so that each result reaches its reader at once and none is lost however
/// the program ends. Returns 0 or the error number.
int write(int descriptor, const QByteArray &bytes);

} // namespace Terminal

#endif
