// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "checks.h"

#include "fields.h"
#include "holds.h"
#include "knownpolicies.h"
#include "text.h"
#include "usage.h"

#include <algorithm>

namespace {

constexpr double ShortestTimeout = 0.001;
constexpr double LongestTimeout = 86'400;

Outcome checkArgument(Argument::Kind kind, const QString &text)
{
    switch (kind) {
    case Argument::Kind::Policy:
        return KnownPolicies::type(text) == 0 ? unknownPolicy(text) : Outcome();
    case Argument::Kind::Policies:
        return KnownPolicies::matching(text).isEmpty() ? unknownPolicy(text) : Outcome();
    case Argument::Kind::Value:
        if (!parseValue(text))
            return usageFailure(
                QStringLiteral("a value is on or off (or true, false, yes, no, 1, 0), not %1")
                    .arg(cited(text)));
        return std::nullopt;
    case Argument::Kind::Name:
    case Argument::Kind::Names: // only the daemon knows the switches
    case Argument::Kind::Switch:
    case Argument::Kind::Holds:
    case Argument::Kind::File:
    case Argument::Kind::Words:
        return std::nullopt;
    }
    Q_UNREACHABLE();
}

Outcome checkArguments(const Request &request)
{
    for (int i = 0; i < request.arguments.size(); ++i) {
        const int place = std::min(i, int(request.verb->arguments.size()) - 1);
        if (Outcome wrong =
                checkArgument(request.verb->arguments[place].kind, request.arguments[i]))
            return wrong;
    }
    return std::nullopt;
}

Outcome checkFields(const Request &request)
{
    if (!request.has(QStringLiteral("fields")))
        return std::nullopt;
    if (request.isJson() || request.has(QStringLiteral("keys")))
        return usageFailure(QStringLiteral("--fields is for text with several columns; take --json "
                                           "or --keys alone"));
    const QStringList names =
        request.options.value(QStringLiteral("fields")).split(QLatin1Char(','));
    for (const QString &name : names) {
        if (!Fields::names().contains(name))
            return unknownName(
                QStringLiteral("usage"), QStringLiteral("field"), Fields::names(), name,
                QStringLiteral("there are: %1").arg(Fields::names().join(QStringLiteral(", "))));
    }
    return std::nullopt;
}

} // namespace

Outcome checkRequest(const Request &request)
{
    if (Outcome wrong = checkArguments(request))
        return wrong;
    static const QStringList colours{QStringLiteral("auto"), QStringLiteral("always"),
                                     QStringLiteral("never")};
    const QString colour = request.options.value(QStringLiteral("color"), colours.first());
    if (!colours.contains(colour))
        return usageFailure(QStringLiteral("--color takes %1, not %2")
                                .arg(colours.join(QStringLiteral(", ")), cited(colour)));
    if (const QString duration = request.options.value(QStringLiteral("for"));
        request.has(QStringLiteral("for")) && !parseDuration(duration))
        return usageFailure(QStringLiteral("--for takes a time like 90m, 3h or 1d12h, not %1")
                                .arg(cited(duration)));
    if (Outcome wrong = checkFields(request))
        return wrong;
    if (!request.has(QStringLiteral("timeout")))
        return std::nullopt;
    const Result<double> seconds =
        parseSeconds(QStringLiteral("--timeout"), request.options.value(QStringLiteral("timeout")),
                     ShortestTimeout, LongestTimeout);
    return seconds ? Outcome() : seconds.failure();
}
