// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/parser.h"

#include "commandline/text.h"
#include "commandline/usage.h"

#include <QCommandLineParser>

namespace {

constexpr double ShortestTimeout = 0.001;
constexpr double LongestTimeout = 86'400;

/// Qt's message is a sentence of its own.
Failure wrongOption(const QCommandLineParser &parser)
{
    QString message = printable(parser.errorText());
    if (message.endsWith(QLatin1Char('.')))
        message.chop(1);
    return usageFailure(Text::tr("%1; see %2 --help").arg(message, programName()));
}

Failure missingWord(const QStringList &words, const QStringList &verbs)
{
    if (words.isEmpty())
        return usageFailure(Text::tr("no verb given; see %1 --help").arg(programName()));
    return usageFailure(Text::tr("%1 needs one of: %2")
                            .arg(words.join(QLatin1Char(' ')),
                                 continuations(words, verbs).join(QStringLiteral(", "))));
}

/// Moves the next word of the verb, and the options before it, out of the rest. False when there
/// is none.
Result<bool> takeWord(SplitLine &line, const QList<QCommandLineOption> &options)
{
    QCommandLineParser parser;
    parser.addOptions(options);
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    if (!parser.parse(QStringList{programName()} + line.rest))
        return wrongOption(parser);

    const QStringList positional = parser.positionalArguments();
    line.options += line.rest.mid(0, line.rest.size() - positional.size());
    line.rest = positional.mid(1);
    if (!positional.isEmpty())
        line.words.append(positional.first());
    return !positional.isEmpty();
}

} // namespace

bool ParsedLine::isAboutProgram() const
{
    return has(QStringLiteral("help")) || has(QStringLiteral("version"));
}

Result<SplitLine> splitLine(const QStringList &arguments, const Grammar &grammar)
{
    SplitLine line{{}, {}, arguments};
    while (!grammar.verbs.contains(line.verb())) {
        if (continuations(line.words, grammar.verbs).isEmpty())
            return grammar.unknownVerb(line.verb());
        const Result<bool> taken = takeWord(line, grammar.options);
        if (!taken)
            return taken.failure();
        if (!*taken)
            break;
    }
    return line;
}

Result<ParsedLine> parseLine(const SplitLine &line, const QList<QCommandLineOption> &ofVerb,
                             const Grammar &grammar)
{
    const QList<QCommandLineOption> options = ofVerb + grammar.options;
    QCommandLineParser parser;
    parser.addOptions(options);
    if (!parser.parse(QStringList{programName()} + line.options + line.rest))
        return wrongOption(parser);

    ParsedLine result{parser.positionalArguments(), {}, {}};
    for (const QCommandLineOption &option : options) {
        if (parser.isSet(option))
            result.options.insert(option.names().constLast(), parser.value(option));
    }
    if (result.isAboutProgram())
        return result;
    if (!grammar.verbs.contains(line.verb()))
        return missingWord(line.words, grammar.verbs);

    const Result<double> seconds =
        parseSeconds(QStringLiteral("--timeout"), parser.value(QStringLiteral("timeout")),
                     ShortestTimeout, LongestTimeout);
    if (!seconds)
        return seconds.failure();
    result.timeout = std::chrono::milliseconds(static_cast<qint64>(*seconds * 1000));
    return result;
}

QStringList continuations(const QStringList &words, const QStringList &verbs)
{
    QString prefix;
    for (const QString &word : words)
        prefix += word + QLatin1Char(' ');
    QStringList result;
    for (const QString &verb : verbs) {
        if (verb.startsWith(prefix))
            result.append(verb.mid(prefix.size()));
    }
    return result;
}

QString namedVerb(const QStringList &arguments, const Grammar &grammar)
{
    const Result<SplitLine> line = splitLine(arguments, grammar);
    return line && grammar.verbs.contains(line->verb()) ? line->verb() : QString();
}

bool asksForJson(const QStringList &arguments)
{
    const QStringList options = arguments.mid(0, arguments.indexOf(QStringLiteral("--")));
    return options.contains(QStringLiteral("--json"));
}
