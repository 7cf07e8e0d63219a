// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMANDLINE_HELP_H
#define GOVD_COMMANDLINE_HELP_H

#include <QString>
#include <QVector>

#include <utility>

class QCommandLineParser;

/// The help that @p parser gives, with the name of its verb in the usage line.
QString verbHelp(const QCommandLineParser &parser, const QString &verb);

/// The help for a whole program: what @p parser gives, and the table of its verbs. A row is a
/// verb's form, in a column that is @p width wide, and its summary.
QString programHelp(const QCommandLineParser &parser,
                    const QVector<std::pair<QString, QString>> &rows, int width);

#endif
