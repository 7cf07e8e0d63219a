// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksretries.h"

#include <QTimer>

#include <algorithm>
#include <chrono>

namespace UDisks {
namespace {

constexpr std::chrono::milliseconds FirstPause = std::chrono::seconds(2);
constexpr std::chrono::milliseconds LongestPause = std::chrono::minutes(1);

} // namespace

bool Retries::begin(const QString &name)
{
    QTimer *&timer = m_timers[name];
    if (timer)
        return timer->intervalAsDuration() > FirstPause;
    timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this, timer = timer, name] {
        timer->setInterval(std::min(2 * timer->intervalAsDuration(), LongestPause));
        Q_EMIT due(name);
    });
    timer->start(FirstPause);
    return false;
}

void Retries::end(const QString &name)
{
    QTimer *timer = m_timers.take(name);
    if (!timer)
        return;
    timer->stop();
    timer->deleteLater(); // it can be the one that is due at this moment
}

void Retries::endAll()
{
    const QStringList names = m_timers.keys();
    for (const QString &name : names)
        end(name);
}

} // namespace UDisks
