// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/commandline.h"

#include "govctl/knownpolicies.h"
#include "govctl/text.h"

#include <QCommandLineParser>

namespace {

const QString Program = QStringLiteral("govctl");

/// A command line on the way from its words to the verb that they name.
struct Split
{
    QStringList words; // of the verb, as far as read
    QStringList options; // that stood before or between them
    QStringList rest;
};

Failure usage(const QString &message)
{
    return {ExitCode::Usage, QStringLiteral("usage"), message, {}};
}

/// Qt's message is a sentence of its own.
Failure wrongOption(const QCommandLineParser &parser)
{
    QString message = printable(parser.errorText());
    if (message.endsWith(QLatin1Char('.')))
        message.chop(1);
    return usage(Text::tr("%1; see govctl --help").arg(message));
}

QStringList verbNames()
{
    QStringList result;
    for (const Verb &verb : verbs())
        result.append(verb.name);
    return result;
}

/// Moves the next word of the verb, and the options before it, out of the rest. False when there
/// is none.
Result<bool> takeWord(Split &split)
{
    QCommandLineParser parser;
    parser.addOptions(commonOptions());
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    if (!parser.parse(QStringList{Program} + split.rest))
        return wrongOption(parser);

    const QStringList positional = parser.positionalArguments();
    split.options += split.rest.mid(0, split.rest.size() - positional.size());
    split.rest = positional.mid(1);
    if (!positional.isEmpty())
        split.words.append(positional.first());
    return !positional.isEmpty();
}

Failure missingWord(const QStringList &words)
{
    if (words.isEmpty())
        return usage(Text::tr("no verb given; see govctl --help"));
    return usage(Text::tr("%1 needs one of: %2")
                     .arg(words.join(QLatin1Char(' ')),
                          verbContinuations(words).join(QStringLiteral(", "))));
}

/// Finds the verb, which is null when the line ends before it.
Result<const Verb *> takeVerb(Split &split)
{
    while (true) {
        const Result<bool> taken = takeWord(split);
        if (!taken)
            return taken.failure();
        if (!*taken)
            return static_cast<const Verb *>(nullptr);
        const QString name = split.words.join(QLatin1Char(' '));
        if (const Verb *verb = findVerb(name))
            return verb;
        if (verbContinuations(split.words).isEmpty())
            return unknownName(QStringLiteral("usage"), Text::tr("verb"), name, verbNames(),
                               Text::tr("see govctl --help"));
    }
}

void addOptions(QCommandLineParser &parser, const Verb *verb)
{
    if (verb)
        parser.addOptions(verb->options);
    parser.addOptions(commonOptions());
}

QHash<QString, QString> givenOptions(const QCommandLineParser &parser, const Verb *verb)
{
    QHash<QString, QString> result;
    for (const QCommandLineOption &option :
         verb ? verb->options + commonOptions() : commonOptions()) {
        if (parser.isSet(option))
            result.insert(option.names().last(), parser.value(option));
    }
    return result;
}

Result<std::chrono::milliseconds> parseTimeout(const QString &text)
{
    constexpr double Longest = 86'400;
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    // Written so that it also refuses what is no number at all.
    if (!isNumber || !(seconds >= 0.001 && seconds <= Longest)) {
        return usage(Text::tr("--timeout takes seconds, from 0.001 to %1, not %2")
                         .arg(QString::number(Longest), quoted(text)));
    }
    return std::chrono::milliseconds(static_cast<qint64>(seconds * 1000));
}

std::optional<Failure> checkCount(const Verb &verb, const QStringList &arguments)
{
    const bool anyNumber =
        !verb.arguments.isEmpty() && verb.arguments.last().kind == Argument::Kind::Words;
    if (anyNumber || arguments.size() == verb.arguments.size())
        return std::nullopt;
    QStringList syntax{Program, verb.name};
    for (const Argument &argument : verb.arguments)
        syntax.append(argument.syntax());
    const QString form = syntax.join(QLatin1Char(' '));
    return arguments.size() < verb.arguments.size()
        ? usage(Text::tr("too few arguments; use: %1").arg(form))
        : usage(Text::tr("too many arguments; use: %1").arg(form));
}

std::optional<Failure> checkArgument(Argument::Kind kind, const QString &text)
{
    switch (kind) {
    case Argument::Kind::Policy:
        if (KnownPolicies::type(text) == 0)
            return unknownName(QStringLiteral("unknown-policy"), Text::tr("policy"), text,
                               KnownPolicies::keys(),
                               Text::tr("\"govctl list --keys\" names them"));
        return std::nullopt;
    case Argument::Kind::Value:
        if (!parseValue(text))
            return usage(Text::tr("a value is on or off (or true, false, yes, no, 1, 0), not %1")
                             .arg(quoted(text)));
        return std::nullopt;
    case Argument::Kind::Switch:
    case Argument::Kind::Words:
        return std::nullopt;
    }
    Q_UNREACHABLE();
}

std::optional<Failure> checkArguments(const Request &request)
{
    if (const auto failure = checkCount(*request.verb, request.arguments))
        return failure;
    for (int i = 0; i < request.verb->arguments.size(); ++i) {
        const Argument::Kind kind = request.verb->arguments[i].kind;
        if (const auto failure = checkArgument(kind, request.arguments.value(i)))
            return failure;
    }
    return std::nullopt;
}

} // namespace

bool Request::value(int index) const
{
    return *parseValue(arguments[index]);
}

Result<Request> parseCommandLine(const QStringList &arguments)
{
    Split split{{}, {}, arguments};
    const Result<const Verb *> verb = takeVerb(split);
    if (!verb)
        return verb.failure();

    QCommandLineParser parser;
    addOptions(parser, *verb);
    if (!parser.parse(QStringList{Program} + split.options + split.rest))
        return wrongOption(parser);

    Request request{*verb, parser.positionalArguments(), givenOptions(parser, *verb), {}, {}};
    if (request.has(QStringLiteral("help")) || request.has(QStringLiteral("version")))
        return request;
    if (!request.verb)
        return missingWord(split.words);

    const auto timeout = parseTimeout(parser.value(QStringLiteral("timeout")));
    if (!timeout)
        return timeout.failure();
    request.timeout = *timeout;
    request.json = request.has(QStringLiteral("json"));
    if (const auto failure = checkArguments(request))
        return *failure;
    return request;
}

QString namedVerb(const QStringList &arguments)
{
    Split split{{}, {}, arguments};
    const Result<const Verb *> verb = takeVerb(split);
    return verb && *verb ? (*verb)->name : QString();
}

bool asksForJson(const QStringList &arguments)
{
    const QStringList options = arguments.mid(0, arguments.indexOf(QStringLiteral("--")));
    return options.contains(QStringLiteral("--json"));
}

Failure unknownName(const QString &failure, const QString &kind, const QString &name,
                    const QStringList &known, const QString &hint)
{
    const QStringList near = nearest(name, known);
    QString message = Text::tr("unknown %1 %2").arg(kind, quoted(name));
    if (near.isEmpty())
        message = Text::tr("%1; %2").arg(message, hint);
    return {ExitCode::Usage, failure, message, near};
}
