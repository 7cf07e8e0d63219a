// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMANDLINE_TEXT_H
#define GOVD_COMMANDLINE_TEXT_H

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <optional>

/// The one translation context of all programs with verbs: Text::tr().
class Text
{
    Q_DECLARE_TR_FUNCTIONS(govd)
};

/// The name of this program, as help and failures write it.
QString programName();

/// @p text with its control characters written as escapes, so that a name from outside can neither
/// steer the terminal nor begin a new line.
QString printable(const QString &text);

/// @p text printable and in double quotes.
QString quoted(const QString &text);

/// "on", "off", or "none" when there is no value. Never translated: scripts read it.
QString onOff(std::optional<bool> value);

/// The value that a user means by @p text (on, off, true, false, yes, no, 1, 0), if any.
std::optional<bool> parseValue(const QString &text);

/// The members of @p known that look most like @p name, best first, at most three.
QStringList nearest(const QString &name, const QStringList &known);

#endif
