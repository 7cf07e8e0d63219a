// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMANDLINE_VERBS_H
#define GOVD_COMMANDLINE_VERBS_H

#include "commandline/parser.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <algorithm>

// What is done with the verbs of every program. Each program has structs Verb and Request of its
// own, because what arguments can be is its own business: a verb has a name, arguments with a
// syntax(), and options; a request is a ParsedLine with a verb.

/// The names of @p verbs, in their order.
template <typename Verb> QStringList namesOf(const QVector<Verb> &verbs)
{
    QStringList result;
    for (const Verb &verb : verbs)
        result.append(verb.name);
    return result;
}

/// The one of @p verbs that is called @p name, or null.
template <typename Verb> const Verb *findVerb(const QVector<Verb> &verbs, const QString &name)
{
    const auto found = std::find_if(verbs.begin(), verbs.end(),
                                    [&name](const Verb &verb) { return verb.name == name; });
    return found == verbs.end() ? nullptr : &*found;
}

/// How @p verb and its arguments are written.
template <typename Verb> QString formOf(const Verb &verb)
{
    QStringList words{verb.name};
    for (const auto &argument : verb.arguments)
        words.append(argument.syntax());
    return words.join(QLatin1Char(' '));
}

/// Reads a whole command line, @p arguments, that names one of @p verbs. What the verb takes is for
/// @p check to judge; a line that is about the program needs neither that nor a verb.
template <typename Request, typename Verb>
Result<Request> parseRequest(const QStringList &arguments, const QVector<Verb> &verbs,
                             const Grammar &grammar,
                             Outcome (*check)(const Verb &verb, const QStringList &arguments))
{
    const Result<SplitLine> split = splitLine(arguments, grammar);
    if (!split)
        return split.failure();
    const Verb *verb = findVerb(verbs, split->verb());
    const Result<ParsedLine> line =
        parseLine(*split, verb ? verb->options : QList<QCommandLineOption>(), grammar);
    if (!line)
        return line.failure();
    if (!line->isAboutProgram()) {
        if (const Outcome failure = check(*verb, line->arguments))
            return *failure;
    }
    return Request{*line, verb};
}

#endif
