// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_TEXT_H
#define GOVCTL_TEXT_H

#include <QString>
#include <QStringList>

#include <optional>

/// The name of this program, as help and failures write it.
QString programName();

/// @p text with its control characters written as escapes, so that a name from outside can neither
/// send control sequences to the terminal nor begin a new line.
QString printable(const QString &text);

/// @p text printable and in double quotes.
QString quoted(const QString &text);

/// A name from outside, quoted for a message; a long one is cut.
QString cited(const QString &name);

/// "on", "off", or "none" when there is no value. Never translated: scripts read it.
QString onOff(std::optional<bool> value);

/// The value that a user means by @p text (on, off, true, false, yes, no, 1, 0), if any.
std::optional<bool> parseValue(const QString &text);

/// Whether one of the shell's patterns @p patterns matches all of @p name, or is @p name itself.
bool matchesAny(const QStringList &patterns, const QString &name);

/// The members of @p known that look like @p name, best first.
QStringList nearest(const QString &name, const QStringList &known);

#endif
