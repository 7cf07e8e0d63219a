// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_VERB_H
#define GOVCTL_VERB_H

#include "commandline/output.h"
#include "commandline/parser.h"

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

struct Verb;

/// What the user asked for: a verb with checked arguments.
struct Request : ParsedLine
{
    const Verb *verb = nullptr;

    /// The argument @p index, of the kind Value.
    bool value(int index) const;
};

/// A place on a verb's command line.
struct Argument
{
    enum class Kind {
        Policy, ///< a policy of this platform
        Switch, ///< a switch of the running daemon
        Value, ///< on or off
        Words, ///< any number of words
    };

    Kind kind;

    /// How help and messages write it.
    QString syntax() const;
    QString description() const;
};

/// One verb: what the parser, the help, the completion and the tests know about it.
struct Verb
{
    QString name; ///< one word, or two with a blank between
    QString summary;
    QVector<Argument> arguments;
    QList<QCommandLineOption> options; ///< beside those that all verbs have
    ExitCode (*run)(const Request &request, Output &output);
};

/// All verbs, in the order of the help.
const QVector<Verb> &verbs();

/// The options that every verb has.
const QList<QCommandLineOption> &commonOptions();

namespace Verbs {

ExitCode list(const Request &request, Output &output);
ExitCode get(const Request &request, Output &output);
ExitCode set(const Request &request, Output &output);
ExitCode explain(const Request &request, Output &output);
ExitCode switchList(const Request &request, Output &output);
ExitCode switchGet(const Request &request, Output &output);
ExitCode switchSet(const Request &request, Output &output);
ExitCode watch(const Request &request, Output &output);
ExitCode status(const Request &request, Output &output);
ExitCode can(const Request &request, Output &output);
ExitCode dump(const Request &request, Output &output);
ExitCode complete(const Request &request, Output &output);

/// Prints the value of what the request names, or answers with the exit code alone: what the two
/// verbs that get something have in common.
ExitCode answer(const Request &request, Output &output, std::optional<bool> value);

} // namespace Verbs

#endif
