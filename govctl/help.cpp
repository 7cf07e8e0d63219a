// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/help.h"
#include "commandline/text.h"
#include "commandline/verbs.h"
#include "govctl/commandline.h"

#include <QCommandLineParser>

QString Argument::syntax() const
{
    switch (kind) {
    case Kind::Policy:
        return QStringLiteral("KEY");
    case Kind::Switch:
        return QStringLiteral("SWITCH");
    case Kind::Value:
        return QStringLiteral("on|off");
    case Kind::Words:
        return QStringLiteral("[WORD...]");
    }
    Q_UNREACHABLE();
}

QString Argument::description() const
{
    switch (kind) {
    case Kind::Policy:
        return Text::tr("A policy; \"govctl list --keys\" names them.");
    case Kind::Switch:
        return Text::tr("An access switch; \"govctl switch list --keys\" names them.");
    case Kind::Value:
        return Text::tr("The new value; true, false, yes, no, 1 and 0 are taken as well.");
    case Kind::Words:
        return Text::tr("The words of a command line, the last one unfinished.");
    }
    Q_UNREACHABLE();
}

QString helpText(const Verb *verb)
{
    QCommandLineParser parser;
    if (!verb) {
        parser.addOptions(commonOptions());
        parser.setApplicationDescription(Text::tr("Reads and changes what this device allows."));
        QVector<std::pair<QString, QString>> rows;
        for (const Verb &row : verbs())
            rows.append({formOf(row), row.summary});
        return programHelp(parser, rows, 24);
    }
    parser.addOptions(verb->options + commonOptions());
    parser.setApplicationDescription(verb->summary);
    for (const Argument &argument : verb->arguments)
        parser.addPositionalArgument(argument.syntax(), argument.description(), argument.syntax());
    return verbHelp(parser, verb->name);
}
