// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/help.h"

#include "commandline/text.h"

#include <QCommandLineParser>

/// The usage line of Qt's text names the program alone.
QString verbHelp(const QCommandLineParser &parser, const QString &verb)
{
    QString text = parser.helpText();
    const int end = text.indexOf(programName()) + programName().size();
    return text.insert(end, QLatin1Char(' ') + verb);
}

QString programHelp(const QCommandLineParser &parser,
                    const QVector<std::pair<QString, QString>> &rows, int width)
{
    QString text = verbHelp(parser, Text::tr("VERB")) + Text::tr("\nVerbs:\n");
    for (const auto &[form, summary] : rows)
        text += QStringLiteral("  %1 %2\n").arg(form.leftJustified(width), summary);
    return text + Text::tr("\n\"%1 VERB --help\" and %1(1) say more.\n").arg(programName());
}
