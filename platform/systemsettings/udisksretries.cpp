// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksretries.h"

#include <QTimer>

#include <algorithm>

namespace UDisks {
namespace {

constexpr int FirstPause = 2'000; ///< in milliseconds
constexpr int LongestPause = 60'000;

} // namespace

void Retries::takeFailure(const QString &name)
{
    QTimer *&timer = m_timers[name];
    if (timer) {
        if (!timer->isActive())
            timer->start(std::min(2 * timer->interval(), LongestPause));
        return;
    }
    timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this,
            [this, timer = timer, name] { Q_EMIT due(name, timer->interval() > FirstPause); });
    timer->start(FirstPause);
}

void Retries::end(const QString &name)
{
    QTimer *timer = m_timers.take(name);
    if (!timer)
        return;
    timer->deleteLater(); // it can be the one that is due at this moment
}

void Retries::endAll()
{
    const QStringList names = m_timers.keys();
    for (const QString &name : names)
        end(name);
}

} // namespace UDisks
