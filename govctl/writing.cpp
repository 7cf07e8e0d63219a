// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/writing.h"

#include <QThread>

#include <algorithm>

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

QStringList forceNotes(const Verdict &verdict)
{
    const QString &key = verdict.policy.key;
    switch (verdict.state()) {
    case Verdict::State::InForce:
    case Verdict::State::Unseen:
        return {};
    case Verdict::State::NotInForce:
        return {QStringLiteral("%1 is not in force: %2").arg(key, verdict.failureText())};
    case Verdict::State::NotEnforced:
        return {QStringLiteral("%1 is kept and announced; the daemon does nothing more for it, so "
                               "programs have to heed it")
                    .arg(key)};
    }
    Q_UNREACHABLE();
}
