// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLACE_H
#define GOVCTL_PLACE_H

#include "verb.h"

/// The parser's state at a word of the command line, after the words before it.
struct Place
{
    QStringList verbWords;
    const Verb *verb = nullptr; ///< null until its name is complete
    int argument = 0; ///< number of arguments before
    bool awaitsValue = false; ///< the word before is an option that takes a value
    bool optionsEnded = false;

    /// The options that can stand here.
    QVector<Option> options() const;

    /// Whether @p word, here, is an option.
    bool isOption(const QString &word) const;

    /// Whether @p word, here, is part of a verb's name.
    bool isVerbWord(const QString &word) const;

    /// Moves on to the word after @p word.
    void pass(const QString &word);
};

/// @p arguments with abbreviated verbs and long options written out. An abbreviation of several
/// words, or of none, stays as it is.
QStringList writtenOut(const QStringList &arguments);

/// The words of @p arguments, which are written out, reordered: the verb first, then the options,
/// then the arguments.
QStringList inOrder(const QStringList &arguments);

#endif
