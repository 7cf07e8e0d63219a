// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksreminders.h"

#include <algorithm>
#include <utility>

namespace UDisks {
namespace {

constexpr std::chrono::milliseconds FirstPause = std::chrono::seconds(2);
constexpr std::chrono::milliseconds LongestPause = std::chrono::minutes(1);

} // namespace

Reminders &Reminders::instance()
{
    static Reminders reminders;
    return reminders;
}

Reminders::Reminders()
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Reminders::remind);
}

bool Reminders::noteFailure(const QString &path)
{
    Reminder &reminder = m_reminders.contains(path) ? m_reminders[path] : begin(path);
    return !std::exchange(reminder.hasFailed, true);
}

void Reminders::noteSuccess(const QString &path)
{
    begin(path);
}

void Reminders::end(const QString &path)
{
    if (m_reminders.remove(path))
        startTimer();
}

Reminders::Reminder &Reminders::begin(const QString &path)
{
    m_reminders.insert(path, {FirstPause, Clock::now() + FirstPause});
    startTimer();
    return m_reminders[path];
}

void Reminders::endAll()
{
    m_reminders.clear();
    startTimer();
}

void Reminders::remind()
{
    const Clock::time_point now = Clock::now();
    const QStringList paths = m_reminders.keys();
    for (const QString &path : paths) {
        // Whoever hears of one may end another.
        const auto reminder = m_reminders.find(path);
        if (reminder == m_reminders.end() || reminder->due > now)
            continue;
        reminder->pause = std::min(2 * reminder->pause, LongestPause);
        reminder->due = now + reminder->pause;
        bool isMounted = false;
        Q_EMIT due(path, isMounted);
        if (!isMounted)
            m_reminders.remove(path);
    }
    startTimer();
}

void Reminders::startTimer()
{
    m_timer.stop();
    if (m_reminders.isEmpty())
        return;
    const auto first = std::min_element(
        m_reminders.begin(), m_reminders.end(),
        [](const Reminder &one, const Reminder &other) { return one.due < other.due; });
    const auto left = std::chrono::ceil<Milliseconds>(first->due - Clock::now());
    m_timer.start(std::max(left, Milliseconds(0)));
}

} // namespace UDisks
