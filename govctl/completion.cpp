// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/completion.h"

#include "commandline/text.h"
#include "commandline/verbs.h"
#include "govctl/knownpolicies.h"
#include "govctl/verb.h"

namespace {

/// Where on the command line a word stands.
struct Place
{
    QStringList verbWords;
    const Verb *verb = nullptr;
    int argument = 0;
    bool awaitsValue = false; // of the option before
    bool optionsEnded = false;
};

QList<QCommandLineOption> optionsAt(const Place &place)
{
    return place.verb ? place.verb->options + commonOptions() : commonOptions();
}

QString spelled(const QString &optionName)
{
    return (optionName.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + optionName;
}

bool takesValue(const Place &place, const QString &word)
{
    const QList<QCommandLineOption> options = optionsAt(place);
    for (const QCommandLineOption &option : options) {
        const QStringList names = option.names();
        for (const QString &name : names) {
            if (spelled(name) == word)
                return !option.valueName().isEmpty();
        }
    }
    return false;
}

void pass(Place &place, const QString &word)
{
    if (place.awaitsValue) {
        place.awaitsValue = false;
    } else if (word == QLatin1String("--")) {
        place.optionsEnded = true;
    } else if (word.startsWith(QLatin1Char('-')) && !place.optionsEnded) {
        place.awaitsValue = takesValue(place, word);
    } else if (place.verb) {
        ++place.argument;
    } else {
        place.verbWords.append(word);
        place.verb = findVerb(verbs(), place.verbWords.join(QLatin1Char(' ')));
    }
}

QVector<Candidate> options(const Place &place)
{
    const QList<QCommandLineOption> known = optionsAt(place);
    QVector<Candidate> result;
    for (const QCommandLineOption &option : known) {
        const QStringList names = option.names();
        for (const QString &name : names)
            result.append({spelled(name), option.description()});
    }
    return result;
}

QVector<Candidate> verbWords(const Place &place)
{
    const QStringList names = continuations(place.verbWords, namesOf(verbs()));
    QVector<Candidate> result;
    for (const QString &name : names) {
        const QString word = name.section(QLatin1Char(' '), 0, 0);
        const Verb *verb =
            findVerb(verbs(), (place.verbWords + QStringList{word}).join(QLatin1Char(' ')));
        if (result.isEmpty() || result.last().word != word)
            result.append({word, verb ? verb->summary : Text::tr("Read or change switches.")});
    }
    return result;
}

QVector<Candidate> described(const QStringList &words, const QString &description)
{
    QVector<Candidate> result;
    for (const QString &word : words)
        result.append({word, description});
    return result;
}

QVector<Candidate> arguments(const Place &place, const std::function<QStringList()> &switchKeys)
{
    if (place.argument >= place.verb->arguments.size())
        return {};
    switch (place.verb->arguments[place.argument].kind) {
    case Argument::Kind::Policy:
        return described(KnownPolicies::keys(), Text::tr("policy"));
    case Argument::Kind::Switch:
        return described(switchKeys(), Text::tr("access switch"));
    case Argument::Kind::Value:
        return described({QStringLiteral("on"), QStringLiteral("off")}, Text::tr("value"));
    case Argument::Kind::Words:
        return {};
    }
    Q_UNREACHABLE();
}

QVector<Candidate> candidates(const Place &place, const QString &word,
                              const std::function<QStringList()> &switchKeys)
{
    if (place.awaitsValue)
        return {};
    if (word.startsWith(QLatin1Char('-')) && !place.optionsEnded)
        return options(place);
    return place.verb ? arguments(place, switchKeys) : verbWords(place);
}

} // namespace

QVector<Candidate> completeCommandLine(const QStringList &words,
                                       const std::function<QStringList()> &switchKeys)
{
    Place place;
    const QStringList finished = words.mid(0, words.size() - 1);
    for (const QString &word : finished)
        pass(place, word);

    const QString unfinished = words.isEmpty() ? QString() : words.last();
    const QVector<Candidate> possible = candidates(place, unfinished, switchKeys);
    QVector<Candidate> result;
    for (const Candidate &candidate : possible) {
        // Shells get one candidate on each line, so a name that is no line of text stays out.
        if (candidate.word.startsWith(unfinished) && printable(candidate.word) == candidate.word)
            result.append(candidate);
    }
    return result;
}
