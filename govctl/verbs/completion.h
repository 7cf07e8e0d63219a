// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_COMPLETION_H
#define GOVCTL_COMPLETION_H

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

/// A word that completes the last one of the command line.
struct Candidate
{
    QString word;
    QString description;
};

/// Returns the completions of the last of @p words, which can be empty, after the words before it.
/// @p words leave out the name of the program. @p switchKeys is called only where a switch can
/// stand.
QVector<Candidate> completeCommandLine(const QStringList &words,
                                       const std::function<QStringList()> &switchKeys);

#endif
