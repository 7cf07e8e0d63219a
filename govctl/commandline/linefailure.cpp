// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "linefailure.h"

#include "place.h"
#include "text.h"
#include "usage.h"

namespace {

/// The failure for the first option that has a value and takes none, or needs one and has none.
Failure misusedOption(const QStringList &arguments)
{
    Place place;
    for (const QString &word : arguments) {
        const QString name = word.section(QLatin1Char('='), 0, 0);
        if (place.isOption(word) && name != word) {
            place.pass(name);
            if (!place.awaitsValue)
                return usageFailure(QStringLiteral("%1 takes no value").arg(printable(name)));
            place.awaitsValue = false;
        } else {
            place.pass(word);
        }
    }
    return usageFailure(QStringLiteral("%1 needs a value; see %2 --help")
                            .arg(printable(arguments.value(arguments.size() - 1)), programName()));
}

Failure unknownOption(const QString &word, const Verb *verb)
{
    QStringList known;
    const auto allOptions = verb ? verb->options + commonOptions() : commonOptions();
    for (const Option &option : allOptions)
        known.append(Option::spelled(option.names.last()));
    return unknownName(QStringLiteral("usage"), QStringLiteral("option"), known, word,
                       QStringLiteral("see %1 --help").arg(programName()));
}

Failure unknownVerb(const QString &name)
{
    QStringList names;
    for (const Verb &verb : verbs())
        names.append(verb.name);
    return unknownName(QStringLiteral("usage"), QStringLiteral("verb"), names, name,
                       QStringLiteral("see %1 --help").arg(programName()));
}

Failure wrongCount(const Verb &verb, const QString &which)
{
    return usageFailure(
        QStringLiteral("too %1 arguments; use: %2 %3").arg(which, programName(), verb.form()));
}

} // namespace

Failure lineFailure(const QStringList &arguments, bool isIncomplete, const QStringList &verbWords,
                    const QStringList &rest)
{
    const Verb *verb = findVerb(verbWords.join(QLatin1Char(' ')));
    for (const QString &word : rest) {
        if (word == QLatin1String("--"))
            continue;
        if (word.startsWith(QLatin1Char('-')))
            return unknownOption(word.section(QLatin1Char('='), 0, 0), verb);
        if (verb)
            return wrongCount(*verb, QStringLiteral("many"));
        return unknownVerb((verbWords + QStringList{word}).join(QLatin1Char(' ')));
    }
    if (!isIncomplete)
        return misusedOption(arguments);
    if (verb)
        return wrongCount(*verb, QStringLiteral("few"));
    return usageFailure(QStringLiteral("%1 needs one of: %2")
                            .arg(verbWords.join(QLatin1Char(' ')),
                                 nextWords(verbWords).join(QStringLiteral(", "))));
}
