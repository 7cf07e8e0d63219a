// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbours.h"
#include "support/openwatch.h"
#include "support/platformkeys.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include "simulator/applicationsandbox.h"

#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Support;

namespace {

const QString Directory = QStringLiteral("/etc/policy/policy.d/");
const QByteArray Forbidden = "[policy]\nCameraEnabled=false\n";
const QByteArray Allowed = "[policy]\nCameraEnabled=true\n";

QStringList usualLog()
{
    return texts({"warning|default|Failed to disable USB devices connection.",
                  "warning|default|Failed to disable USB devices connection."});
}

} // namespace

/// Which files of policies are read, in which order, and what becomes of them.
class TestPolicyFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void singleFileIsReadAlone();
    void emptySingleFileHidesTheDirectory();
    void directoryIsReadWithoutTheSingleFile();
    void directoryIsASeed();
    void lastFileByNameDecides_data();
    void lastFileByNameDecides();
    void filesAreAppliedInTurn();
    void filesOfADirectoryAddUp();
    void entriesOfADirectory_data();
    void entriesOfADirectory();
    void placesWithoutEntries_data();
    void placesWithoutEntries();
    void valuesFromFilesAreNeitherAuditedNorAnnounced();
    void lockedPolicyIsNotTakenFromAFile();
    void linkToAFileIsTheFile();
    void linkToNowhereIsNoFile_data();
    void linkToNowhereIsNoFile();
};

void TestPolicyFiles::init()
{
    Files::reset();
    QDir(QStringLiteral("/tmp/elsewhere")).removeRecursively();
}

void TestPolicyFiles::singleFileIsReadAlone()
{
    Files::write(PolicyFile, "[policy]\nMicrophoneEnabled=false\n");
    Files::write(Directory + QStringLiteral("seed.conf"), Forbidden);
    const OpenWatch watch(Directory);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(QStringLiteral("MicrophoneEnabled")), QVariant(false));
    QCOMPARE(client.policy(Camera), QVariant(true));
    QCOMPARE(watch.opened(), 0);
    QCOMPARE(Files::read(Directory + QStringLiteral("seed.conf")), Forbidden);
}

void TestPolicyFiles::emptySingleFileHidesTheDirectory()
{
    Files::write(PolicyFile, "[policy]\n");
    Files::write(Directory + QStringLiteral("seed.conf"), Forbidden);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(true));
}

void TestPolicyFiles::directoryIsReadWithoutTheSingleFile()
{
    Files::write(Directory + QStringLiteral("seed.conf"), Forbidden);
    const OpenWatch watch(Directory);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(false));
    QVERIFY(watch.opened() > 0);
    QCOMPARE(daemon.log(), usualLog());
}

void TestPolicyFiles::directoryIsASeed()
{
    Files::write(Directory + QStringLiteral("seed.conf"), Forbidden);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.stop(), 0);
    QCOMPARE(Files::values(PolicyFile).size(), platformKeys().size());
    QVERIFY(Files::read(PolicyFile).startsWith("[policy]\nCameraEnabled=false\nNoPolicy=true\n"));

    // From now on the directory says nothing any more.
    Files::write(Directory + QStringLiteral("seed.conf"), Allowed);
    const OpenWatch watch(Directory);
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(false));
    QCOMPARE(watch.opened(), 0);
}

void TestPolicyFiles::lastFileByNameDecides_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    const auto row = [](const char *first, const char *last) {
        QTest::addRow("%s before %s", first, last)
            << QString::fromLatin1(first) << QString::fromLatin1(last);
    };
    row("a.conf", "B.conf");
    row("A.conf", "b.conf");
    row("10-base", "20-site");
    row("a", "a.conf");
    row("policy1.conf", "Policy2.conf");
}

void TestPolicyFiles::lastFileByNameDecides()
{
    QFETCH(const QString, first);
    QFETCH(const QString, last);
    for (const bool allowed : {false, true}) {
        Files::reset();
        Files::write(Directory + last, allowed ? Allowed : Forbidden);
        Files::write(Directory + first, allowed ? Forbidden : Allowed);
        Daemon daemon;
        QVERIFY(daemon.start());
        QCOMPARE(Client().policy(Camera), QVariant(allowed));
        QCOMPARE(daemon.stop(), 0);
    }
}

void TestPolicyFiles::filesAreAppliedInTurn()
{
    Files::write(Directory + QStringLiteral("B.conf"), Allowed);
    Files::write(Directory + QStringLiteral("a.conf"), Forbidden);
    Files::write(Directory + QStringLiteral("c.conf"), Forbidden);
    Neighbours neighbours;
    neighbours.add<Simulator::ApplicationSandbox>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(QStringLiteral("org.pelloraos.appjaild1")).mid(0, 3),
             texts({"AddToGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
                    "RemoveFromGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
                    "AddToGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])"}));
}

void TestPolicyFiles::filesOfADirectoryAddUp()
{
    Files::write(Directory + QStringLiteral("one"), Forbidden);
    Files::write(Directory + QStringLiteral("two"), "[policy]\nMicrophoneEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("MicrophoneEnabled")), QVariant(false));
    QVERIFY(Files::read(PolicyFile)
                .startsWith("[policy]\nCameraEnabled=false\nMicrophoneEnabled=false\n"));
}

void TestPolicyFiles::entriesOfADirectory_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("any ending") << QStringLiteral("seed.txt") << true;
    QTest::newRow("no ending") << QStringLiteral("seed") << true;
    QTest::newRow("back-up of an editor") << QStringLiteral("seed.conf~") << true;
    QTest::newRow("blanks and quotes") << QStringLiteral("a 'seed' \"file\"") << true;
    QTest::newRow("hidden") << QStringLiteral(".seed.conf") << false;
    QTest::newRow("in a directory below") << QStringLiteral("below/seed.conf") << false;
}

void TestPolicyFiles::entriesOfADirectory()
{
    QFETCH(const QString, name);
    QFETCH(const bool, isRead);
    Files::write(Directory + name, Forbidden);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(!isRead));
    QCOMPARE(daemon.log(), usualLog());
}

void TestPolicyFiles::placesWithoutEntries_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("empty directory") << QStringLiteral("directory");
    QTest::newRow("file in the directory's place") << QStringLiteral("file");
    QTest::newRow("nothing but a directory below") << QStringLiteral("below");
    QTest::newRow("pipe that nobody writes to") << QStringLiteral("pipe");
    QTest::newRow("link to nowhere") << QStringLiteral("link");
}

void TestPolicyFiles::placesWithoutEntries()
{
    QFETCH(const QString, kind);
    if (kind == QLatin1String("file"))
        Files::write(QStringLiteral("/etc/policy/policy.d"), Forbidden);
    else
        QVERIFY(QDir().mkpath(Directory));
    if (kind == QLatin1String("below"))
        QVERIFY(QDir().mkpath(Directory + QStringLiteral("below")));
    if (kind == QLatin1String("pipe"))
        QCOMPARE(mkfifo(qPrintable(Directory + QStringLiteral("pipe")), 0600), 0);
    if (kind == QLatin1String("link"))
        QCOMPARE(symlink("/nowhere", qPrintable(Directory + QStringLiteral("link"))), 0);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QCOMPARE(Files::values(PolicyFile).size(), platformKeys().size());
    QCOMPARE(daemon.log(), usualLog());
}

void TestPolicyFiles::valuesFromFilesAreNeitherAuditedNorAnnounced()
{
    Files::write(PolicyFile, Forbidden);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.said().filter(QStringLiteral("sendEventStringAlt")), QStringList());
    QCOMPARE(daemon.announcements(), QStringList());
}

void TestPolicyFiles::lockedPolicyIsNotTakenFromAFile()
{
    Files::write(Directory + QStringLiteral("seed.conf"),
                 "[policy]\nCameraEnabled=true\nMicrophoneEnabled=false\n");
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    lock.setLocked({Camera});
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!Files::values(PolicyFile).contains(Camera));
    QCOMPARE(Client().policy(QStringLiteral("MicrophoneEnabled")), QVariant(false));
    lock.setLocked({});
    QVERIFY(Client().haveNoValue({Camera}));
    QCOMPARE(daemon.log().mid(0, 2), usualLog());
}

void TestPolicyFiles::linkToAFileIsTheFile()
{
    Files::write(QStringLiteral("/tmp/elsewhere/seed"), Forbidden);
    QVERIFY(QDir().mkpath(Directory));
    QCOMPARE(symlink("/tmp/elsewhere/seed", qPrintable(Directory + QStringLiteral("link"))), 0);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(false));
}

void TestPolicyFiles::linkToNowhereIsNoFile_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("missing") << QStringLiteral("/nowhere");
    QTest::newRow("below a file") << QStringLiteral("/etc/passwd/inside");
    QTest::newRow("itself") << PolicyFile;
}

void TestPolicyFiles::linkToNowhereIsNoFile()
{
    QFETCH(QString, target);
    QCOMPARE(symlink(qPrintable(target), qPrintable(PolicyFile)), 0);
    Files::write(Directory + QStringLiteral("seed.conf"), Forbidden);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(false));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("false"));
}

QTEST_GUILESS_MAIN(TestPolicyFiles)
#include "tst_policyfiles.moc"
