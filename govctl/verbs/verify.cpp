// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "evidence.h"
#include "knownpolicies.h"
#include "request.h"
#include "text.h"
#include "writing.h"

#include <QJsonArray>
#include <QThread>

#include <algorithm>

namespace {

using Verdicts = QVector<Verdict>;

bool isAnyNotInForce(const Verdicts &verdicts)
{
    return std::any_of(verdicts.begin(), verdicts.end(), [](const Verdict &verdict) {
        return verdict.state() == Verdict::State::NotInForce;
    });
}

Result<Verdicts> look(Daemon &daemon, const QStringList &keys)
{
    const Result<Snapshot> snapshot = takeSnapshot(daemon, keys);
    if (!snapshot)
        return snapshot.failure();
    return judge(daemon, snapshot->policies);
}

/// The end of an enforcement is not announced: checks again until all is in force, for three
/// seconds at most.
Result<Verdicts> lookAgain(Daemon &daemon, const QStringList &keys)
{
    constexpr int Looks = 15;
    Result<Verdicts> verdicts = look(daemon, keys);
    for (int i = 1; i < Looks && verdicts && isAnyNotInForce(*verdicts); ++i) {
        QThread::msleep(200);
        verdicts = look(daemon, keys);
    }
    return verdicts;
}

Output::Style styleOf(Verdict::State state)
{
    switch (state) {
    case Verdict::State::InForce:
        return Output::Style::Good;
    case Verdict::State::NotInForce:
        return Output::Style::Bad;
    case Verdict::State::NotEnforced:
    case Verdict::State::Unseen:
        return Output::Style::Faint;
    }
    Q_UNREACHABLE();
}

QString toText(const Verdicts &verdicts, const Output &output)
{
    int width = 0;
    for (const Verdict &verdict : verdicts)
        width = std::max(width, int(verdict.policy.key.size()));
    QString text;
    for (const Verdict &verdict : verdicts) {
        const QString state = stateText(verdict.state());
        text += verdict.policy.key.leftJustified(width + 2) + output.paint(verdict.policy.value)
            + QString(6 - onOff(verdict.policy.value).size(), QLatin1Char(' '))
            + output.paint(styleOf(verdict.state()), state);
        if (!verdict.findings.isEmpty())
            text += QString(std::max(1, 16 - int(state.size())), QLatin1Char(' ')) + verdict.text();
        text += QLatin1Char('\n');
    }
    return text;
}

QJsonArray toJson(const Verdicts &verdicts)
{
    QJsonArray result;
    for (const Verdict &verdict : verdicts)
        result.append(verdict.toJson());
    return result;
}

} // namespace

ExitCode Verbs::verify(const Request &request, Output &output)
{
    const QStringList keys = KnownPolicies::matching(request.arguments);
    Daemon daemon(request.timeout, waitingNote(output));
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    Result<Verdicts> verdicts = look(daemon, keys);
    const bool repairs =
        request.has(QStringLiteral("repair")) && verdicts && isAnyNotInForce(*verdicts);
    if (repairs) {
        if (const auto failure = daemon.reload())
            return output.fail(*failure);
        verdicts = lookAgain(daemon, keys);
    }
    if (!verdicts)
        return output.fail(verdicts.failure());
    return output.write(
        isAnyNotInForce(*verdicts) ? ExitCode::No : ExitCode::Done,
        {{QStringLiteral("repaired"), repairs}, {QStringLiteral("policies"), toJson(*verdicts)}},
        toText(*verdicts, output));
}
