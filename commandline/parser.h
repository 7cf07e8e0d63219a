// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMANDLINE_PARSER_H
#define GOVD_COMMANDLINE_PARSER_H

#include "commandline/result.h"

#include <QCommandLineOption>
#include <QHash>
#include <QList>

#include <chrono>

/// What reading a command line takes to know about a program.
struct Grammar
{
    QStringList verbs; ///< their names: one word each, or several with blanks between
    QList<QCommandLineOption> options; ///< those that all verbs have
    Failure (*unknownVerb)(const QString &name);
};

/// A command line, split where its verb ends.
struct SplitLine
{
    QStringList words; ///< of the verb; fewer than it has when the line ends before
    QStringList options; ///< that stand before the words or between them
    QStringList rest;

    QString verb() const { return words.join(QLatin1Char(' ')); }
};

/// What stands on a command line beside its verb.
struct ParsedLine
{
    QStringList arguments;
    QHash<QString, QString> options; ///< by the last name; flags have an empty value
    std::chrono::milliseconds timeout{0};

    bool has(const QString &option) const { return options.contains(option); }
    bool isJson() const { return has(QStringLiteral("json")); }

    /// Whether it asks for nothing but help or the version.
    bool isAboutProgram() const;
};

/// Splits @p arguments, which are without the name of the program. Fails when they name a verb that
/// there is not; that the name ends too early is no failure yet.
Result<SplitLine> splitLine(const QStringList &arguments, const Grammar &grammar);

/// Reads a command line whose verb has the options @p ofVerb beside the common ones; the arguments
/// are not checked. Fails when the verb's name is not complete. With the option "help" or "version"
/// only the options are checked.
Result<ParsedLine> parseLine(const SplitLine &line, const QList<QCommandLineOption> &ofVerb,
                             const Grammar &grammar);

/// What may follow @p words on the way to one of the names @p verbs; empty when nothing may.
QStringList continuations(const QStringList &words, const QStringList &verbs);

/// The name of the verb in @p arguments, even if they are wrong otherwise; null when there is none.
QString namedVerb(const QStringList &arguments, const Grammar &grammar);

/// Whether @p arguments ask for JSON, even if they are wrong in other respects.
bool asksForJson(const QStringList &arguments);

#endif
