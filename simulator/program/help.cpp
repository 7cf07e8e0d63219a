// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/text.h"
#include "simulator/program/commandline.h"

#include <QCommandLineParser>

namespace Simulator {
namespace {

QString verbTable()
{
    QString result = Text::tr("Verbs:") + QLatin1Char('\n');
    for (const Verb &verb : verbs())
        result += QStringLiteral("  %1 %2\n").arg(verb.name, -10).arg(verb.summary);
    return result;
}

/// The usage line of Qt's text names the program alone.
QString withVerb(const QString &text, const QString &verb)
{
    const QString program = QCoreApplication::arguments().constFirst();
    QString result = text;
    return result.insert(text.indexOf(program) + program.size(), QLatin1Char(' ') + verb);
}

} // namespace

QString Argument::syntax() const
{
    return isOptional ? QStringLiteral("[%1]").arg(name) : name;
}

QString helpText(const Verb *verb)
{
    QCommandLineParser parser;
    if (verb)
        parser.addOptions(verb->options);
    parser.addOptions(commonOptions());
    if (!verb) {
        parser.setApplicationDescription(
            Text::tr("A device in memory: the services that the policy daemon works with."));
        return withVerb(parser.helpText(), Text::tr("VERB")) + QLatin1Char('\n') + verbTable()
            + Text::tr("\n\"govd-sim VERB --help\" and govd-sim(1) say more.\n");
    }
    parser.setApplicationDescription(verb->summary);
    for (const Argument &argument : verb->arguments)
        parser.addPositionalArgument(argument.name, argument.description, argument.syntax());
    return withVerb(parser.helpText(), verb->name);
}

} // namespace Simulator
