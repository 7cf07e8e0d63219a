// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_COMPLETION_H
#define GOVCTL_COMPLETION_H

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

/// Something that a word of the command line can become.
struct Candidate
{
    QString word;
    QString description;
};

/// Returns what the last of @p words can become, as the words before it stand. The name of the
/// program is none of them; the last one can be empty. @p switchKeys is asked for the switches if
/// one can stand there.
QVector<Candidate> completeCommandLine(const QStringList &words,
                                       const std::function<QStringList()> &switchKeys);

#endif
