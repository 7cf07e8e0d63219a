// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/commandline.h"

#include "commandline/text.h"
#include "commandline/usage.h"
#include "commandline/verbs.h"

#include <algorithm>

namespace Simulator {
namespace {

Failure unknownVerb(const QString &name)
{
    return unknownName(Text::tr("verb"), name, namesOf(verbs()));
}

Grammar grammar()
{
    return {namesOf(verbs()), commonOptions(), unknownVerb};
}

Outcome checkArguments(const Verb &verb, const QStringList &arguments)
{
    const QVector<Argument> &places = verb.arguments;
    for (int i = 0; i < std::min(arguments.size(), places.size()); ++i) {
        const Argument &place = places[i];
        if (!place.known.isEmpty() && !place.known.contains(arguments[i]))
            return unknownName(place.isWord() ? Text::tr("word") : place.name, arguments[i],
                               place.known);
    }
    // What the verb says of its words is more to the point than their number alone.
    if (const Outcome failure = verb.check ? verb.check(arguments) : std::nullopt)
        return failure;
    const auto optional = std::count_if(places.begin(), places.end(),
                                        [](const Argument &place) { return place.isOptional; });
    return checkCount(arguments.size(), places.size() - static_cast<int>(optional), places.size(),
                      formOf(verb));
}

} // namespace

Result<Request> parseCommandLine(const QStringList &arguments)
{
    return parseRequest<Request>(arguments, verbs(), grammar(), checkArguments);
}

QString namedVerb(const QStringList &arguments)
{
    return ::namedVerb(arguments, grammar());
}

Failure unknownName(const QString &kind, const QString &name, const QStringList &known)
{
    return ::unknownName(QStringLiteral("unknown"), kind, name, known,
                         Text::tr("known are %1").arg(known.join(QStringLiteral(", "))));
}

} // namespace Simulator
