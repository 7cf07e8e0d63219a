// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_TIMELIMIT_H
#define GOVCTL_TIMELIMIT_H

#include "govctl/holds.h"
#include "govctl/request.h"

/// The time limit that the option "for" sets on a change; does nothing without the option.
class TimeLimit
{
public:
    /// To be called before @p steps are made.
    static Result<TimeLimit> begin(const Request &request, const QVector<Step> &steps);

    /// To be called when nothing was changed.
    void cancel() const;

    /// Lines that say when it ends, if there is a limit, and what will not be taken back.
    QStringList notes() const;

private:
    std::optional<Hold> m_hold;
    QStringList m_lasting; // had no value before, and a write cannot remove a value
};

#endif
