// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "holdtimer.h"

#include "text.h"

#include <QProcess>

#include <algorithm>

namespace {

/// Fails with what the program prints as message.
Outcome run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool hasEnded = process.waitForStarted() && process.waitForFinished();
    if (hasEnded && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return std::nullopt;
    const QString words = QString::fromUtf8(process.readAll()).simplified();
    return Failure{ExitCode::NoDaemon,
                   QStringLiteral("no-timer"),
                   QStringLiteral("%1 sets no timer: %2")
                       .arg(program, printable(words.isEmpty() ? process.errorString() : words)),
                   {}};
}

} // namespace

Outcome HoldTimer::set(const QVector<QDateTime> &ends)
{
    constexpr int Again = 30;
    // A timer that elapses while its service still runs starts nothing.
    constexpr int Soonest = 2;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QVector<QDateTime> times;
    for (const QDateTime &end : ends)
        times.append(end <= now ? now.addSecs(Again) : std::max(end, now.addSecs(Soonest)));
    // It fails when there is no timer, which is no failure here.
    (void)run(QStringLiteral("systemctl"),
              {QStringLiteral("stop"), QStringLiteral("govctl-release.timer")});
    if (times.isEmpty())
        return std::nullopt;
    const QDateTime next = *std::min_element(times.begin(), times.end());
    return run(QStringLiteral("systemd-run"),
               {QStringLiteral("--quiet"),
                // While the system starts, the timer waits for the clock, and logins wait for this.
                QStringLiteral("--no-block"), QStringLiteral("--unit=govctl-release.service"),
                QStringLiteral("--on-calendar=%1 UTC")
                    .arg(next.toUTC().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"))),
                QStringLiteral("--timer-property=AccuracySec=1s")});
}
