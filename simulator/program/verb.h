// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_VERB_H
#define GOVD_SIMULATOR_PROGRAM_VERB_H

#include "commandline/output.h"
#include "commandline/parser.h"

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

namespace Simulator {

struct Verb;

/// What the user asked for: a verb with checked arguments.
struct Request : ParsedLine
{
    const Verb *verb = nullptr;
};

/// A place on a verb's command line.
struct Argument
{
    QString name; ///< as help and messages write it
    QString description;
    QStringList known; ///< the words that it can be; empty when it can be any
    bool isOptional = false;

    /// Whether its name is just the list of the words that it can be.
    bool isWord() const { return name.contains(QLatin1Char('|')); }

    QString syntax() const;
};

/// One verb: what the parser, the help and the tests know about it.
struct Verb
{
    QString name;
    QString summary;
    QVector<Argument> arguments;
    QList<QCommandLineOption> options; ///< beside those that all verbs have
    bool isForScripts; ///< whether a script can use it
    /// Tells what the rows cannot tell, before the arguments are counted; can be null.
    Outcome (*check)(const QStringList &arguments);
    Outcome (*run)(const Request &request, Output &output);
};

/// All verbs, in the order of the help.
const QVector<Verb> &verbs();

/// The options that every verb has.
const QList<QCommandLineOption> &commonOptions();

namespace Verbs {

Outcome device(const Request &request, Output &output);
Outcome status(const Request &request, Output &output);
Outcome services(const Request &request, Output &output);
Outcome order(const Request &request, Output &output);
Outcome expect(const Request &request, Output &output);
Outcome run(const Request &request, Output &output);

Outcome checkFail(const QStringList &arguments);
Outcome checkExpect(const QStringList &arguments);

} // namespace Verbs

} // namespace Simulator

#endif
