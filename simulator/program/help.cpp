// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/help.h"
#include "commandline/text.h"
#include "simulator/program/commandline.h"

#include <QCommandLineParser>

namespace Simulator {

QString Argument::syntax() const
{
    return isOptional ? QStringLiteral("[%1]").arg(name) : name;
}

QString helpText(const Verb *verb)
{
    QCommandLineParser parser;
    if (!verb) {
        parser.addOptions(commonOptions());
        parser.setApplicationDescription(
            Text::tr("A device in memory: the services that the policy daemon works with."));
        QVector<std::pair<QString, QString>> rows;
        for (const Verb &row : verbs())
            rows.append({row.name, row.summary});
        return programHelp(parser, rows, 10);
    }
    parser.addOptions(verb->options + commonOptions());
    parser.setApplicationDescription(verb->summary);
    for (const Argument &argument : verb->arguments)
        parser.addPositionalArgument(argument.name, argument.description, argument.syntax());
    return verbHelp(parser, verb->name);
}

} // namespace Simulator
