// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMANDLINE_TERMINAL_H
#define GOVD_COMMANDLINE_TERMINAL_H

#include <QByteArray>
#include <QString>

/// The streams that a program writes to.
namespace Terminal {

/// Whether standard output is a terminal that may be steered.
bool canBeSteered();

/// Whether standard output is a terminal whose user has nothing against colours.
bool wantsColours();

/// Places of a terminal for letters; 0 where it does not tell.
struct Size
{
    int columns = 0;
    int rows = 0;
};

/// The size of the terminal that standard output is, if it is one.
Size size();

/// As much of the lines of @p text as a terminal of @p size shows while its cursor stands below
/// them. Colours take no place, and are complete at the end of each line.
QString clipped(const QString &text, const Size &size);

/// Writes without a buffer, so that each result reaches its reader at once and no way to end the
/// program loses one. Returns 0 or the error number.
int write(int descriptor, const QByteArray &bytes);

} // namespace Terminal

#endif
