// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLACE_H
#define GOVCTL_PLACE_H

#include "govctl/verb.h"

/// Where on a command line a word stands, as the words before it say.
struct Place
{
    QStringList verbWords;
    const Verb *verb = nullptr; ///< once its name is complete
    int argument = 0; ///< number of arguments before
    bool awaitsValue = false; ///< of the option before
    bool optionsEnded = false;

    /// The options that can stand here.
    QVector<Option> options() const;

    /// Whether @p word, here, is an option.
    bool isOption(const QString &word) const;

    /// Whether @p word, here, is part of a verb's name.
    bool isVerbWord(const QString &word) const;

    /// Goes on behind @p word.
    void pass(const QString &word);
};

/// @p arguments with short forms of verbs and long options written out. What is the beginning of
/// several, or of none, stays as it is.
QStringList writtenOut(const QStringList &arguments);

/// A line that means the same as @p arguments, which are written out, with the verb first, then the
/// options, then the arguments.
QStringList inOrder(const QStringList &arguments);

#endif
