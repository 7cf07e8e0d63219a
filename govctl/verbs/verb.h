// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_VERB_H
#define GOVCTL_VERB_H

#include "request.h"

#include <QVector>

/// A place on a verb's command line.
struct Argument
{
    enum class Kind {
        Policy, ///< a policy of this platform
        Policies, ///< any number of patterns that name policies
        Name, ///< a policy or a switch, or nothing
        Names, ///< any number of patterns that name policies or switches
        Switch, ///< a switch of the running daemon
        Value, ///< on or off
        Holds, ///< any number of holds
        File, ///< a file with policies and switches
        Words, ///< any number of words
    };

    Kind kind;

    /// Whether any number of words, none included, can stand here.
    bool isOpen() const;

    /// Whether nothing at all can stand here.
    bool isOptional() const;

    /// How help and messages write it.
    QString syntax() const;
    QString description() const;
};

/// An option of a verb.
struct Option
{
    QStringList names; ///< without dashes, the long one last
    QString description;
    QString valueName; ///< empty when it takes no value

    /// One of its names as it is typed.
    static QString spelled(const QString &name);
};

/// One verb: what the parser, the help, the completion and the tests know about it.
struct Verb
{
    QString name; ///< one word, or two with a blank between
    QString summary;
    QVector<Argument> arguments;
    QVector<Option> options; ///< beside those that all verbs have
    ExitCode (*run)(const Request &request, Output &output);
    bool writes = false; ///< the daemon may call many services before it replies

    /// How the verb and its arguments are written.
    QString form() const;
};

/// All verbs, in the order of the help.
const QVector<Verb> &verbs();

/// The verb called @p name, or null.
const Verb *findVerb(const QString &name);

/// The options that every verb has.
const QVector<Option> &commonOptions();

/// The words that may follow @p words on the way to a verb, each once.
QStringList nextWords(const QStringList &words);

#endif
