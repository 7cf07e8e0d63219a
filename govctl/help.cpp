// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/commandline.h"
#include "govctl/text.h"

#include <QCommandLineParser>

namespace {

QString verbTable()
{
    QString result = Text::tr("Verbs:") + QLatin1Char('\n');
    for (const Verb &verb : verbs()) {
        QStringList syntax{verb.name};
        for (const Argument &argument : verb.arguments)
            syntax.append(argument.syntax());
        result +=
            QStringLiteral("  %1 %2\n").arg(syntax.join(QLatin1Char(' ')), -24).arg(verb.summary);
    }
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
    if (verb)
        parser.addOptions(verb->options);
    parser.addOptions(commonOptions());
    if (!verb) {
        parser.setApplicationDescription(Text::tr("Reads and changes what this device allows."));
        return withVerb(parser.helpText(), Text::tr("VERB")) + QLatin1Char('\n') + verbTable()
            + Text::tr("\n\"govctl VERB --help\" and govctl(1) say more.\n");
    }
    parser.setApplicationDescription(verb->summary);
    for (const Argument &argument : verb->arguments)
        parser.addPositionalArgument(argument.syntax(), argument.description(), argument.syntax());
    return withVerb(parser.helpText(), verb->name);
}
