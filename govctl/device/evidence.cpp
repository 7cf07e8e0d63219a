// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "evidence.h"

#include "carriers.h"
#include "text.h"

#include <QJsonArray>

#include <algorithm>

namespace {

bool any(const QVector<Finding> &findings, Finding::Kind kind)
{
    return std::any_of(findings.begin(), findings.end(),
                       [kind](const Finding &finding) { return finding.kind == kind; });
}

} // namespace

Verdict::State Verdict::state() const
{
    if (isContradicted())
        return State::NotInForce;
    if (findings.isEmpty())
        return State::NotEnforced;
    if (!policy.value.value_or(false) && any(findings, Finding::Kind::Absent))
        return State::NotInForce;
    const bool isSeen =
        any(findings, Finding::Kind::Holds) && !any(findings, Finding::Kind::Unseen);
    return isSeen ? State::InForce : State::Unseen;
}

bool Verdict::isContradicted() const
{
    return any(findings, Finding::Kind::Fails);
}

QString Verdict::text() const
{
    QStringList texts;
    for (const Finding &finding : findings)
        texts.append(finding.text);
    return texts.join(QStringLiteral("; "));
}

QString Verdict::failureText() const
{
    QStringList texts;
    for (const Finding &finding : findings) {
        if (finding.kind == Finding::Kind::Fails || finding.kind == Finding::Kind::Absent)
            texts.append(finding.text);
    }
    return texts.join(QStringLiteral("; "));
}

QJsonObject Verdict::toJson() const
{
    QJsonArray seen;
    for (const Finding &finding : findings)
        seen.append(finding.text);
    return {{QStringLiteral("key"), policy.key},
            {QStringLiteral("value"), valueToJson(policy.value)},
            {QStringLiteral("state"), stateName(state())},
            {QStringLiteral("seen"), seen}};
}

QString stateName(Verdict::State state)
{
    switch (state) {
    case Verdict::State::InForce:
        return QStringLiteral("in-force");
    case Verdict::State::NotInForce:
        return QStringLiteral("not-in-force");
    case Verdict::State::NotEnforced:
        return QStringLiteral("not-enforced");
    case Verdict::State::Unseen:
        return QStringLiteral("unseen");
    }
    Q_UNREACHABLE();
}

QString stateText(Verdict::State state)
{
    switch (state) {
    case Verdict::State::InForce:
        return QStringLiteral("in force");
    case Verdict::State::NotInForce:
        return QStringLiteral("not in force");
    case Verdict::State::NotEnforced:
        return QStringLiteral("not enforced by the daemon");
    case Verdict::State::Unseen:
        return QStringLiteral("cannot be seen");
    }
    Q_UNREACHABLE();
}

QVector<Verdict> judge(Daemon &daemon, const QVector<PolicyState> &policies)
{
    Surroundings surroundings(daemon);
    QVector<Verdict> result;
    for (const PolicyState &policy : policies) {
        Verdict verdict{policy, {}};
        for (const Carrier &carrier : carriers()) {
            if (carrier.type == policy.type)
                verdict.findings.append(
                    carrier.look(surroundings, carrier, policy.value.value_or(false)));
        }
        if (policy.reason() == Reason::File)
            verdict.findings.append({Finding::Kind::Fails, policy.shortReason()});
        result.append(verdict);
    }
    return result;
}
