// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "completion.h"

#include "holds.h"
#include "knownpolicies.h"
#include "place.h"
#include "text.h"

#include <QDir>

#include <algorithm>

namespace {

QVector<Candidate> options(const Place &place)
{
    QVector<Candidate> result;
    const auto allOptions = place.options();
    for (const Option &option : allOptions) {
        for (const QString &name : option.names)
            result.append({Option::spelled(name), option.description});
    }
    return result;
}

QVector<Candidate> verbWords(const Place &place)
{
    QVector<Candidate> result;
    const auto allWords = nextWords(place.verbWords);
    for (const QString &word : allWords) {
        const Verb *verb = findVerb((place.verbWords + QStringList{word}).join(QLatin1Char(' ')));
        result.append({word, verb ? verb->summary : QStringLiteral("Read or change switches.")});
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

/// The files that complete a path; a folder ends with a slash, so that its files can follow.
QVector<Candidate> files(const QString &path)
{
    const QString folder = path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
    const QDir directory(folder.isEmpty() ? QStringLiteral(".") : folder);
    const QFileInfoList entries =
        directory.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    QVector<Candidate> result;
    for (const QFileInfo &entry : entries) {
        const QString end = entry.isDir() ? QStringLiteral("/") : QString();
        result.append({folder + entry.fileName() + end, QStringLiteral("file")});
    }
    return result;
}

QVector<Candidate> holds()
{
    QVector<Candidate> result;
    const auto allHolds = Holds::all().holds;
    for (const Hold &hold : allHolds)
        result.append({hold.id, QStringLiteral("until ") + hold.until.toString(Qt::ISODate)});
    return result;
}

QVector<Candidate> arguments(const Place &place, const QString &word,
                             const std::function<QStringList()> &switchKeys)
{
    const QVector<Argument> &known = place.verb->arguments;
    const bool isOpen = !known.isEmpty() && known.last().isOpen();
    if (place.argument >= known.size() && !isOpen)
        return {};
    switch (known[std::min(place.argument, int(known.size()) - 1)].kind) {
    case Argument::Kind::Policy:
    case Argument::Kind::Policies:
        return described(KnownPolicies::keys(), QStringLiteral("policy"));
    case Argument::Kind::Name:
    case Argument::Kind::Names:
        return described(KnownPolicies::keys(), QStringLiteral("policy"))
            + described(switchKeys(), QStringLiteral("access switch"));
    case Argument::Kind::Switch:
        return described(switchKeys(), QStringLiteral("access switch"));
    case Argument::Kind::Value:
        return described({QStringLiteral("on"), QStringLiteral("off")}, QStringLiteral("value"));
    case Argument::Kind::Holds:
        return holds();
    case Argument::Kind::File:
        return files(word);
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
    return place.verb ? arguments(place, word, switchKeys) : verbWords(place);
}

} // namespace

QVector<Candidate> completeCommandLine(const QStringList &words,
                                       const std::function<QStringList()> &switchKeys)
{
    Place place;
    const auto allWords = writtenOut(words.mid(0, words.size() - 1));
    for (const QString &word : allWords)
        place.pass(word);

    const QString unfinished = words.isEmpty() ? QString() : words.last();
    QVector<Candidate> result;
    const auto allCandidates = candidates(place, unfinished, switchKeys);
    for (const Candidate &candidate : allCandidates) {
        // Shells read one candidate from each line, so a name with control characters is left out.
        if (candidate.word.startsWith(unfinished) && printable(candidate.word) == candidate.word)
            result.append(candidate);
    }
    return result;
}
