// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QDir>
#include <QtTest>

using namespace Support;

namespace {

constexpr unsigned Seed = 20260103;
constexpr int Workers = 7; // each kind of user once
constexpr int OddShare = 85; // of a hundred: what is cheap and goes wrong
#ifdef __SANITIZE_ADDRESS__
constexpr int Allowance = 16384; // kilobytes: the sanitizer's own books grow
#else
constexpr int Allowance = 1024; // kilobytes
#endif

/// Policies whose services need not be there: a change for one that has never been seen is kept for
/// it, which takes memory by design.
const QStringList Keys = {QStringLiteral("NfcEnabled"),    QStringLiteral("WlanEnabled"),
                          QStringLiteral("VpnEnabled"),    QStringLiteral("CloudSyncEnabled"),
                          QStringLiteral("BackupEnabled"), QStringLiteral("DeveloperShellEnabled")};

int residentKilobytes(qint64 process)
{
    const QByteArray status = Files::read(QStringLiteral("/proc/%1/status").arg(process));
    const int start = status.indexOf("VmRSS:") + 6;
    return status.mid(start, status.indexOf("kB", start) - start).trimmed().toInt();
}

int descriptors(qint64 process)
{
    return QDir(QStringLiteral("/proc/%1/fd").arg(process))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

} // namespace

/// Calls without end: what the daemon has taken of memory and descriptors after the first ten
/// thousand is all that it ever takes.
class TestEndurance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void memoryAndDescriptorsStayAsTheyAre();
};

void TestEndurance::memoryAndDescriptorsStayAsTheyAre()
{
    Files::reset();
    Daemon daemon;
    QVERIFY(daemon.start());
    const int first = 10000;
    const int all = amount(100000, 1000000);
    runWorkers(Workers, first / Workers, OddShare, Seed, Keys);
    Client client;
    client.policy(Keys.first());
    const int memory = residentKilobytes(daemon.processId());
    const int open = descriptors(daemon.processId());

    runWorkers(Workers, (all - first) / Workers, OddShare, Seed + Workers, Keys);
    client.policy(Keys.first());
    const int grown = residentKilobytes(daemon.processId()) - memory;
    qInfo("seed %u: %d calls; %d kB and %d descriptors after %d of them, %d kB and %d more at the "
          "end",
          Seed, all, memory, open, first, grown, descriptors(daemon.processId()) - open);
    QVERIFY(memory > 0);
    QVERIFY(grown <= Allowance);
    QCOMPARE(descriptors(daemon.processId()), open);
    QCOMPARE(daemon.stop(), 0);
}

QTEST_GUILESS_MAIN(TestEndurance)
#include "tst_endurance.moc"
