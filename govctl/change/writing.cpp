// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "writing.h"

#include "knownpolicies.h"

#include <QThread>

#include <algorithm>

namespace {

bool concerns(const Step &step, const PolicyState &policy)
{
    if (step.kind == Step::Kind::Policy)
        return step.key == policy.key;
    return std::any_of(
        policy.switches.begin(), policy.switches.end(),
        [&step](const Daemon::Switch &governor) { return governor.key == step.key; });
}

} // namespace

std::function<void()> waitingNote(const Output &output)
{
    if (output.isJson())
        return {};
    return [&output] {
        output.note(QStringLiteral("waiting for the daemon, which answers when its services have; "
                                   "a change is made also without waiting for it"));
    };
}

QVector<Verdict> settledVerdicts(Daemon &daemon, const QVector<PolicyState> &policies)
{
    constexpr int Looks = 10;
    const auto isContradicted = [](const Verdict &verdict) {
        return verdict.isContradicted();
    };
    QVector<Verdict> verdicts = judge(daemon, policies);
    for (int look = 1;
         look < Looks && std::any_of(verdicts.begin(), verdicts.end(), isContradicted); ++look) {
        QThread::msleep(100);
        verdicts = judge(daemon, policies);
    }
    return verdicts;
}

Result<ForceCheck> checkForce(Daemon &daemon, const QVector<Step> &steps)
{
    if (steps.isEmpty())
        return ForceCheck();
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return snapshot.failure();
    QVector<PolicyState> written;
    for (const PolicyState &policy : snapshot->policies) {
        if (std::any_of(steps.begin(), steps.end(),
                        [&policy](const Step &step) { return concerns(step, policy); }))
            written.append(policy);
    }
    ForceCheck result;
    const QVector<Verdict> verdicts = settledVerdicts(daemon, written);
    for (const Verdict &verdict : verdicts) {
        result.isContradicted |= verdict.isContradicted();
        if (verdict.state() == Verdict::State::NotInForce)
            result.notes += forceNotes(verdict);
    }
    return result;
}

QStringList forceNotes(const Verdict &verdict)
{
    const QString &key = verdict.policy.key;
    switch (verdict.state()) {
    case Verdict::State::InForce:
        return {};
    case Verdict::State::Unseen:
        return {
            QStringLiteral("whether %1 is in force cannot be seen: %2").arg(key, verdict.text())};
    case Verdict::State::NotInForce:
        return {QStringLiteral("%1 is not in force: %2").arg(key, verdict.failureText())};
    case Verdict::State::NotEnforced:
        return {QStringLiteral("%1 is kept and announced; the daemon does nothing more for it, so "
                               "programs have to heed it")
                    .arg(key)};
    }
    Q_UNREACHABLE();
}
