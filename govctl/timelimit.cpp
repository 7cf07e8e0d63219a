// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/timelimit.h"

Result<TimeLimit> TimeLimit::begin(const Request &request, const QVector<Step> &steps)
{
    TimeLimit limit;
    if (!request.has(QStringLiteral("for")))
        return limit;
    // A policy or switch that has the value already is not changed, so nothing is to be taken back.
    QVector<Step> changing;
    for (const Step &step : steps) {
        if (!step.before)
            limit.m_lasting.append(step.name());
        else if (step.before != step.value)
            changing.append(step);
    }
    if (changing.isEmpty())
        return limit;
    const std::optional<qint64> seconds =
        parseDuration(request.options.value(QStringLiteral("for")));
    const Result<Hold> hold = Holds::begin(changing, seconds.value_or(0));
    if (!hold)
        return hold.failure();
    limit.m_hold = *hold;
    return limit;
}

void TimeLimit::cancel() const
{
    if (m_hold)
        Holds::forget(*m_hold);
}

QStringList TimeLimit::notes() const
{
    QStringList result;
    for (const QString &name : m_lasting)
        result.append(QStringLiteral("%1 had no value before, so it is not taken back").arg(name));
    if (!m_hold)
        return result;
    const QString when =
        m_hold->until.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    return result
        << QStringLiteral("until %1; \"govctl release %2\" ends it early").arg(when, m_hold->id);
}
