// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/watchdog.h"

#include "common/names.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>

#if GOVD_SYSTEMD
#include <systemd/sd-daemon.h>
#endif

namespace {

using std::chrono::microseconds;

/// How long the process may go without a sign of life; zero when nobody watches it.
microseconds timeAllowed()
{
    uint64_t time = 0;
#if GOVD_SYSTEMD
    if (sd_watchdog_enabled(0, &time) <= 0)
        time = 0;
#endif
    return microseconds(time);
}

void tellOfLife()
{
#if GOVD_SYSTEMD
    sd_notify(0, "WATCHDOG=1");
#endif
}

/// A quarter of the time allowed: what delays one question does not cost the process its life.
microseconds interval()
{
    static const microseconds time = timeAllowed() / 4;
    return time;
}

bool isWatched()
{
    return interval() > microseconds::zero();
}

/// Runs out when the last answer of the bus is an interval ago. Main thread only.
QDeadlineTimer answerIsRecent;

QDBusMessage question()
{
    return QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                          Names::BusDaemon.interface, QStringLiteral("GetId"));
}

void ask(QObject *context)
{
    auto *watcher =
        new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(question()), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [](QDBusPendingCallWatcher *finished) {
                         if (!finished->isError())
                             Watchdog::busHasAnswered();
                         finished->deleteLater();
                     });
}

} // namespace

void Watchdog::start(QObject *context)
{
    if (!isWatched())
        return;
    auto *timer = new QTimer(context);
    QObject::connect(timer, &QTimer::timeout, context, [context] { ask(context); });
    timer->start(std::chrono::duration_cast<std::chrono::milliseconds>(interval()));
}

void Watchdog::busHasAnswered()
{
    if (!isWatched() || !answerIsRecent.hasExpired())
        return;
    tellOfLife();
    answerIsRecent.setRemainingTime(interval() / 2);
}

void Watchdog::checkBus()
{
    if (!isWatched() || !answerIsRecent.hasExpired())
        return;
    if (QDBusConnection::systemBus().call(question()).type() == QDBusMessage::ReplyMessage)
        busHasAnswered();
}
