// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "watchdog.h"

#include "names.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <cstdint>

#if GOVD_SYSTEMD
#include <systemd/sd-daemon.h>
#endif

namespace {

using std::chrono::milliseconds;

milliseconds readTimeAllowed()
{
    uint64_t microseconds = 0;
#if GOVD_SYSTEMD
    if (sd_watchdog_enabled(0, &microseconds) <= 0)
        microseconds = 0;
#endif
    return milliseconds(microseconds / 1000);
}

/// The longest time between two reports; zero when there is no watchdog.
milliseconds timeAllowed()
{
    static const milliseconds time = readTimeAllowed();
    return time;
}

void report()
{
#if GOVD_SYSTEMD
    sd_notify(0, "WATCHDOG=1");
#endif
}

bool doesBusAnswer()
{
    const QDBusMessage question =
        QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                       Names::BusDaemon.interface, QStringLiteral("GetId"));
    return QDBusConnection::systemBus().call(question).type() == QDBusMessage::ReplyMessage;
}

} // namespace

Watchdog::Watchdog()
{
    if (timeAllowed() == milliseconds::zero())
        return;
    QCoreApplication::instance()->installEventFilter(this);
    auto *timer = new QTimer(this);
    timer->start(timeAllowed() / 4);
}

void Watchdog::checkBus()
{
    static QElapsedTimer sinceReport;
    const bool isRecent =
        sinceReport.isValid() && !sinceReport.hasExpired((timeAllowed() / 8).count());
    if (timeAllowed() == milliseconds::zero() || isRecent || !doesBusAnswer())
        return;
    report();
    sinceReport.start();
}

bool Watchdog::eventFilter(QObject *receiver, QEvent *event)
{
    checkBus();
    return QObject::eventFilter(receiver, event);
}
