// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/commandline.h"

#include "govctl/text.h"

#include <QCommandLineParser>

#include <algorithm>

namespace Simulator {
namespace {

const QString Program = QStringLiteral("govd-sim");

/// Qt's message is a sentence of its own.
Failure wrongOption(const QCommandLineParser &parser)
{
    QString message = printable(parser.errorText());
    if (message.endsWith(QLatin1Char('.')))
        message.chop(1);
    return usageFailure(Text::tr("%1; see govd-sim --help").arg(message));
}

QStringList verbNames()
{
    QStringList names;
    for (const Verb &verb : verbs())
        names.append(verb.name);
    return names;
}

/// Finds the first word that is no option. Null when there is none.
Result<QString> verbName(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions(commonOptions());
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    if (!parser.parse(QStringList{Program} + arguments))
        return wrongOption(parser);
    return parser.positionalArguments().value(0);
}

Result<std::chrono::milliseconds> parseTimeout(const QString &text)
{
    constexpr double Longest = 86'400;
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    // Written so that it also refuses what is no number at all.
    if (!isNumber || !(seconds >= 0.001 && seconds <= Longest)) {
        return usageFailure(Text::tr("--timeout takes seconds, from 0.001 to %1, not %2")
                                .arg(QString::number(Longest), quoted(text)));
    }
    return std::chrono::milliseconds(static_cast<qint64>(seconds * 1000));
}

Outcome checkCount(const Verb &verb, int count)
{
    int least = 0;
    QStringList syntax{Program, verb.name};
    for (const Argument &argument : verb.arguments) {
        least += argument.isOptional ? 0 : 1;
        syntax.append(argument.syntax());
    }
    const QString form = syntax.join(QLatin1Char(' '));
    if (count < least)
        return usageFailure(Text::tr("too few arguments; use: %1").arg(form));
    if (count > verb.arguments.size())
        return usageFailure(Text::tr("too many arguments; use: %1").arg(form));
    return std::nullopt;
}

Outcome checkArguments(const Verb &verb, const QStringList &arguments)
{
    for (int i = 0; i < std::min(arguments.size(), verb.arguments.size()); ++i) {
        const Argument &argument = verb.arguments[i];
        if (!argument.known.isEmpty() && !argument.known.contains(arguments[i]))
            return unknownName(argument.isWord() ? Text::tr("word") : argument.name, arguments[i],
                               argument.known);
    }
    // What the verb says of its words is more to the point than their number alone.
    const Outcome failure = verb.check ? verb.check(arguments) : std::nullopt;
    return failure ? failure : checkCount(verb, arguments.size());
}

Request readRequest(const QCommandLineParser &parser, const Verb *verb,
                    const QList<QCommandLineOption> &options)
{
    Request request{verb, parser.positionalArguments().mid(1), {}, {}};
    for (const QCommandLineOption &option : options) {
        if (parser.isSet(option))
            request.options.insert(option.names().last(), parser.value(option));
    }
    return request;
}

} // namespace

Result<Request> parseCommandLine(const QStringList &arguments)
{
    const Result<QString> name = verbName(arguments);
    if (!name)
        return name.failure();
    const Verb *verb = findVerb(*name);
    if (!verb && !name->isNull())
        return unknownName(Text::tr("verb"), *name, verbNames());

    QCommandLineParser parser;
    const QList<QCommandLineOption> options =
        verb ? verb->options + commonOptions() : commonOptions();
    parser.addOptions(options);
    if (!parser.parse(QStringList{Program} + arguments))
        return wrongOption(parser);
    Request request = readRequest(parser, verb, options);
    if (request.has(QStringLiteral("help")) || request.has(QStringLiteral("version")))
        return request;
    if (!verb)
        return usageFailure(Text::tr("no verb given; see govd-sim --help"));

    const auto timeout = parseTimeout(parser.value(QStringLiteral("timeout")));
    if (!timeout)
        return timeout.failure();
    request.timeout = *timeout;
    if (const Outcome failure = checkArguments(*verb, request.arguments))
        return *failure;
    return request;
}

QString namedVerb(const QStringList &arguments)
{
    const Result<QString> name = verbName(arguments);
    return name && findVerb(*name) ? *name : QString();
}

bool asksForJson(const QStringList &arguments)
{
    const QStringList options = arguments.mid(0, arguments.indexOf(QStringLiteral("--")));
    return options.contains(QStringLiteral("--json"));
}

Failure usageFailure(const QString &message)
{
    return {ExitCode::Usage, QStringLiteral("usage"), message, {}};
}

Failure unknownName(const QString &kind, const QString &name, const QStringList &known)
{
    const QStringList near = nearest(name, known);
    QString message = Text::tr("unknown %1 %2").arg(kind, quoted(name));
    if (near.isEmpty())
        message = Text::tr("%1; known are %2").arg(message, known.join(QStringLiteral(", ")));
    return {ExitCode::Usage, QStringLiteral("unknown"), message, near};
}

} // namespace Simulator
