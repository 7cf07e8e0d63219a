// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "timelimit.h"

#include <utility>

Result<TimeLimit> TimeLimit::begin(const Request &request, const QVector<Step> &steps)
{
    TimeLimit limit;
    if (!request.has(QStringLiteral("for")))
        return limit;
    QVector<Step> changing;
    for (const Step &step : steps) {
        // A write cannot remove a value.
        if (step.before)
            changing.append(step);
        else
            limit.m_lasting.append(
                QStringLiteral("%1 had no value before, so it is not taken back").arg(step.name()));
    }
    const std::optional<qint64> seconds =
        parseDuration(request.options.value(QStringLiteral("for")));
    const Result<std::optional<Hold>> hold = Holds::begin(changing, seconds.value_or(0));
    if (!hold)
        return hold.failure();
    limit.m_hold = *hold;
    return limit;
}

Outcome TimeLimit::checkRight(const Request &request)
{
    return request.has(QStringLiteral("for")) ? Holds::checkRight() : std::nullopt;
}

void TimeLimit::settle(const QVector<Step> &made, const Outcome &failure)
{
    const bool isAllowed = !Holds::checkRight();
    const Outcome unsaved = Holds::edit([&](Hold &hold) {
        const bool isOwn = m_hold && hold.id == m_hold->id;
        if (failure && !isOwn)
            return;
        QVector<Step> kept;
        for (const Step &step : std::as_const(hold.steps)) {
            if (contains(made, step) == isOwn)
                kept.append(step);
            else if (!isOwn && isAllowed)
                m_lasting.append(QStringLiteral("hold %1 does not take back %2 any more")
                                     .arg(hold.id, step.name()));
            else if (!isOwn)
                m_lasting.append(
                    QStringLiteral("hold %1 may still take back %2, which only root can change")
                        .arg(hold.id, step.name()));
        }
        if (isAllowed)
            hold.steps = kept;
        if (isOwn && kept.isEmpty())
            m_hold.reset();
    });
    if (unsaved)
        m_lasting.append(unsaved->message);
}

QStringList TimeLimit::notes() const
{
    if (!m_hold)
        return m_lasting;
    const QString when =
        m_hold->until.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    return m_lasting
        + QStringList{
            QStringLiteral("until %1; \"govctl release %2\" ends it early").arg(when, m_hold->id)};
}
