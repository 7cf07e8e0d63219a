// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_TIMELIMIT_H
#define GOVCTL_TIMELIMIT_H

#include "holds.h"
#include "request.h"

/// What a change does to holds: with the option "for" it begins one, and it takes what it changes
/// out of the others.
class TimeLimit
{
public:
    /// To be called before @p steps are made.
    static Result<TimeLimit> begin(const Request &request, const QVector<Step> &steps);

    /// Whether this user may set the limit that @p request asks for, if any.
    static Outcome checkRight(const Request &request);

    /// To be called when the change has ended, with the steps that were, or may have been, @p made.
    /// After a @p failure other holds keep theirs.
    void settle(const QVector<Step> &made, const Outcome &failure = std::nullopt);

    /// Lines that say when it ends, if there is a limit, and what will not be taken back.
    QStringList notes() const;

private:
    std::optional<Hold> m_hold;
    QStringList m_lasting;
};

#endif
