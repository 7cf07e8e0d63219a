// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QtTest>

#include <algorithm>

using namespace Support;

namespace {

const QString Key = QStringLiteral("NfcEnabled");
constexpr int Calls = 20000;

/// The times of @p count reads by one user, in microseconds.
QVector<int> timesOfReads(int count)
{
    QVector<int> times;
    for (const QString &line :
         runClient(Identity::of("mdm"), {QStringLiteral("read"), Key, QString::number(count)})) {
        if (!line.startsWith(QLatin1String("returns v")))
            qFatal("A read got this: %s", qPrintable(line));
        times.append(line.section(QLatin1Char(' '), -1).toInt());
    }
    return times;
}

/// The most memory that a process has had so far, in kilobytes.
int peakMemory(qint64 process)
{
    const QByteArray status = Files::read(QStringLiteral("/proc/%1/status").arg(process));
    const int start = status.indexOf("VmHWM:") + 6;
    return status.mid(start, status.indexOf("kB", start) - start).trimmed().toInt();
}

} // namespace

/// One user without rights queues calls by the thousand: they cost others time and nothing else.
class TestFlood : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void othersAreServedAllTheSame();
};

void TestFlood::othersAreServedAllTheSame()
{
    Files::reset();
    Daemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot before = Files::snapshot(QStringLiteral("/etc/policy/policy.conf"));
    QVector<int> undisturbed = timesOfReads(101);
    std::sort(undisturbed.begin(), undisturbed.end());
    const int usual = undisturbed.at(50);
    const int memory = peakMemory(daemon.processId());

    daemon.pause(); // so that all of them are in the queue before the read
    CrowdClient flood(Identity::of("guest"),
                      {QStringLiteral("flood"), Key, QString::number(Calls)});
    QVERIFY(flood.waitForLine(QStringLiteral("sent")));
    daemon.resume();
    const int delayed = timesOfReads(1).first();

    qInfo("a read takes %d us, behind %d queued writes of another user %d ms: %d times as long;"
          " the queue takes %d kB of the daemon's memory",
          usual, Calls, delayed / 1000, delayed / usual, peakMemory(daemon.processId()) - memory);
    QVERIFY(flood.isRunning());
    QVERIFY(Files::snapshot(QStringLiteral("/etc/policy/policy.conf")) == before);
    QCOMPARE(Client().policy(Key), QVariant(true));
}

QTEST_GUILESS_MAIN(TestFlood)
#include "tst_flood.moc"
