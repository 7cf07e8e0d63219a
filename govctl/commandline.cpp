// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/commandline.h"

#include "commandline/text.h"
#include "commandline/usage.h"
#include "commandline/verbs.h"
#include "govctl/knownpolicies.h"

namespace {

Failure unknownVerb(const QString &name)
{
    return unknownName(QStringLiteral("usage"), Text::tr("verb"), name, namesOf(verbs()),
                       Text::tr("see govctl --help"));
}

Grammar grammar()
{
    return {namesOf(verbs()), commonOptions(), unknownVerb};
}

Outcome checkArgument(Argument::Kind kind, const QString &text)
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
            return usageFailure(
                Text::tr("a value is on or off (or true, false, yes, no, 1, 0), not %1")
                    .arg(quoted(text)));
        return std::nullopt;
    case Argument::Kind::Switch:
    case Argument::Kind::Words:
        return std::nullopt;
    }
    Q_UNREACHABLE();
}

Outcome checkArguments(const Verb &verb, const QStringList &arguments)
{
    const int count = verb.arguments.size();
    const bool anyNumber = count > 0 && verb.arguments.last().kind == Argument::Kind::Words;
    Outcome failure =
        anyNumber ? std::nullopt : checkCount(arguments.size(), count, count, formOf(verb));
    if (failure)
        return failure;
    for (int i = 0; i < count; ++i) {
        if (Outcome wrong = checkArgument(verb.arguments[i].kind, arguments.value(i)))
            return wrong;
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
    return parseRequest<Request>(arguments, verbs(), grammar(), checkArguments);
}

QString namedVerb(const QStringList &arguments)
{
    return namedVerb(arguments, grammar());
}
