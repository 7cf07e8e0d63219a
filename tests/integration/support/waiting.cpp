// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/waiting.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

namespace Support {

namespace {

/// Pause between two looks at a condition that no event announces, in microseconds.
constexpr unsigned long Pause = 1000;

} // namespace

bool waitFor(const std::function<bool()> &condition, int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        QThread::usleep(Pause);
    }
    return true;
}

} // namespace Support
