// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "place.h"

namespace {

/// The one of @p known that begins with @p word; @p word itself when it is known, or when none or
/// several begin with it.
QString completed(const QString &word, const QStringList &known)
{
    if (word.isEmpty() || known.contains(word))
        return word;
    QStringList found;
    for (const QString &candidate : known) {
        if (candidate.startsWith(word))
            found.append(candidate);
    }
    return found.size() == 1 ? found.first() : word;
}

QString completedOption(const QString &word, const QVector<Option> &options)
{
    QStringList known;
    for (const Option &option : options)
        known.append(Option::spelled(option.names.last()));
    const QString name = word.section(QLatin1Char('='), 0, 0);
    return name.size() > 2 ? completed(name, known) + word.mid(name.size()) : word;
}

} // namespace

QVector<Option> Place::options() const
{
    return verb ? verb->options + commonOptions() : commonOptions();
}

bool Place::isOption(const QString &word) const
{
    return !awaitsValue && !optionsEnded && word.size() > 1 && word.startsWith(QLatin1Char('-'));
}

bool Place::isVerbWord(const QString &word) const
{
    return !awaitsValue && !verb && !isOption(word);
}

void Place::pass(const QString &word)
{
    if (awaitsValue) {
        awaitsValue = false;
    } else if (word == QLatin1String("--") && !optionsEnded) {
        optionsEnded = true;
    } else if (isOption(word)) {
        const auto allOptions = options();
        for (const Option &option : allOptions) {
            for (const QString &name : option.names)
                awaitsValue |= Option::spelled(name) == word && !option.valueName.isEmpty();
        }
    } else if (verb) {
        ++argument;
    } else {
        verbWords.append(word);
        verb = findVerb(verbWords.join(QLatin1Char(' ')));
    }
}

QStringList writtenOut(const QStringList &arguments)
{
    QStringList result;
    Place place;
    for (const QString &argument : arguments) {
        QString word = argument;
        if (place.isOption(word))
            word = completedOption(word, place.options());
        else if (place.isVerbWord(word))
            word = completed(word, nextWords(place.verbWords));
        place.pass(word);
        result.append(word);
    }
    return result;
}

QStringList inOrder(const QStringList &arguments)
{
    Place place;
    QStringList words;
    QStringList options;
    QStringList rest;
    for (const QString &word : arguments) {
        const bool endsOptions = word == QLatin1String("--") && !place.optionsEnded;
        if (place.awaitsValue || (place.isOption(word) && !endsOptions))
            options.append(word);
        else if (place.isVerbWord(word))
            words.append(word);
        else if (!endsOptions)
            rest.append(word);
        place.pass(word);
    }
    if (!rest.isEmpty())
        rest.prepend(QStringLiteral("--"));
    return words + options + rest;
}
