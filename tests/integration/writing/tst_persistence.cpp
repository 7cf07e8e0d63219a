// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/watcheddaemon.h"

#include <QtTest>

#include <sys/stat.h>

using namespace Support;

/// What becomes of the policy file.
class TestPersistence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void writeChangesTheFileAsLittleAsPossible_data();
    void writeChangesTheFileAsLittleAsPossible();
    void eachWriteIsMadeOnWhatTheFileHoldsNow();
    void fileIsReplacedAsAWhole();
    void nothingElseIsLeftInTheDirectory();
    void linkIsReplacedByAFile();
    void firstStartWritesEveryPolicy();
    void policyWriteDoesNotTouchTheSwitchFile();
    void changeOutlivesTheDaemon_data();
    void changeOutlivesTheDaemon();
    void directoryIsNotReadOnceTheFileIsThere();
};

void TestPersistence::writeChangesTheFileAsLittleAsPossible_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<bool>("value");
    QTest::addColumn<QByteArray>("after");
    const auto row = [](const char *name, const char *before, bool value, const char *after) {
        QTest::newRow(name) << QByteArray(before) << value << QByteArray(after);
    };
    row("empty file", "", true, "[policy]\nCameraEnabled=true\n");
    row("value changes at its place", "[policy]\nA=true\nCameraEnabled=true\nB=false\n", false,
        "[policy]\nA=true\nCameraEnabled=false\nB=false\n");
    row("value stays", "[policy]\nCameraEnabled=true\nB=false\n", true,
        "[policy]\nCameraEnabled=true\nB=false\n");
    row("new key goes to the end of its group", "[policy]\nA=true\n\n[other]\nx=1\n", true,
        "[policy]\nA=true\nCameraEnabled=true\n\n[other]\nx=1\n");
    row("new group goes to the end of the file", "[other]\nx=1\n", false,
        "[other]\nx=1\n\n[policy]\nCameraEnabled=false\n");
    row("same key in another group", "[other]\nCameraEnabled=true\n\n[policy]\nA=true\n", false,
        "[other]\nCameraEnabled=true\n\n[policy]\nA=true\nCameraEnabled=false\n");
    row("values that are no booleans", "[policy]\nA=yes\nB=\nC=1;2;\nCameraEnabled=maybe\n", true,
        "[policy]\nA=yes\nB=\nC=1;2;\nCameraEnabled=true\n");
    row("1 becomes true", "[policy]\nA=1\nCameraEnabled=1\n", true,
        "[policy]\nA=1\nCameraEnabled=true\n");
    row("0 becomes false", "[policy]\nCameraEnabled=0\n", false, "[policy]\nCameraEnabled=false\n");
    row("keys with another letter case", "[policy]\ncameraenabled=true\n", false,
        "[policy]\ncameraenabled=true\nCameraEnabled=false\n");
    row("comments go", "# head\n\n[policy]\n# of the camera\nCameraEnabled=true\n# tail\n", false,
        "[policy]\nCameraEnabled=false\n");
    row("comments of other groups go", "# head\n[other]\n#x\nx=1\n[policy]\n#p\nA=true\n", true,
        "[other]\nx=1\n\n[policy]\nA=true\nCameraEnabled=true\n");
    row("blank lines go", "\n\n[policy]\n\n\nA=true\n\n\nCameraEnabled=true\n\n", false,
        "[policy]\nA=true\nCameraEnabled=false\n");
    row("translations go", "[policy]\nA=true\nA[de]=false\nCameraEnabled[de]=true\n", false,
        "[policy]\nA=true\nCameraEnabled=false\n");
    row("blanks around the value go", "[policy]\nA = true\nCameraEnabled  =  true\n", false,
        "[policy]\nA=true\nCameraEnabled=false\n");
    row("last line without an end", "[policy]\nA=true\nCameraEnabled=true", false,
        "[policy]\nA=true\nCameraEnabled=false\n");
    row("texts beyond ASCII", "[policy]\nK\xc3\xbche=true\n[\xce\xb1]\n\xce\xb2=\xce\xb3\n", true,
        "[policy]\nK\xc3\xbche=true\nCameraEnabled=true\n\n[\xce\xb1]\n\xce\xb2=\xce\xb3\n");
}

void TestPersistence::writeChangesTheFileAsLittleAsPossible()
{
    QFETCH(QByteArray, before);
    QFETCH(bool, value);
    QFETCH(QByteArray, after);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(PolicyFile, before);
    QCOMPARE(daemon.set(Camera, value), QVariant(true));
    QCOMPARE(Files::read(PolicyFile), after);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestPersistence::eachWriteIsMadeOnWhatTheFileHoldsNow()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(PolicyFile));
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    QCOMPARE(Files::read(PolicyFile), QByteArray("[policy]\nCameraEnabled=false\n"));
    QCOMPARE(daemon.set(QStringLiteral("BrowserEnabled"), true), QVariant(true));
    QCOMPARE(Files::read(PolicyFile),
             QByteArray("[policy]\nCameraEnabled=false\nBrowserEnabled=true\n"));
    // What the file says meanwhile does not count until the next start.
    Files::write(PolicyFile, "[policy]\nCameraEnabled=true\n");
    QCOMPARE(daemon.policy(Camera), QVariant(false));
}

void TestPersistence::fileIsReplacedAsAWhole()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot before = Files::snapshot(PolicyFile);
    QFile reader(PolicyFile);
    QVERIFY(reader.open(QIODevice::ReadOnly));

    QCOMPARE(daemon.set(Camera, false), QVariant(true));

    QCOMPARE(reader.readAll(), before.content); // who has the old file open sees all of it
    QVERIFY(Files::snapshot(PolicyFile).inode != before.inode);
    QCOMPARE(
        Files::read(PolicyFile),
        QByteArray(before.content).replace("\nCameraEnabled=true\n", "\nCameraEnabled=false\n"));
}

void TestPersistence::nothingElseIsLeftInTheDirectory()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    for (const bool value : {false, false, true})
        QCOMPARE(daemon.set(Camera, value), QVariant(true));
    QCOMPARE(QDir(QStringLiteral("/etc/policy"))
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot),
             QStringList(QStringLiteral("policy.conf")));
}

void TestPersistence::linkIsReplacedByAFile()
{
    const QString target = QStringLiteral("/etc/policy/elsewhere");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(target, "[policy]\nA=true\n");
    QVERIFY(QFile::remove(PolicyFile));
    QVERIFY(QFile::link(target, PolicyFile));
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    QVERIFY(!QFileInfo(PolicyFile).isSymLink());
    QCOMPARE(Files::read(PolicyFile), QByteArray("[policy]\nA=true\nCameraEnabled=false\n"));
    QCOMPARE(Files::read(target), QByteArray("[policy]\nA=true\n"));
}

void TestPersistence::firstStartWritesEveryPolicy()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const auto values = Files::values(PolicyFile);
    QCOMPARE(values.size(), 46);
    for (auto value = values.begin(); value != values.end(); ++value) {
        const bool isUserReport = value.key() == QLatin1String("UserReportExportEnabled");
        QCOMPARE(value.value(), isUserReport ? QStringLiteral("false") : QStringLiteral("true"));
    }
    QCOMPARE(Files::read(PolicyFile).count('['), 1); // one group
    QCOMPARE(Files::read(PolicyFile).count('\n'), 47);
}

void TestPersistence::policyWriteDoesNotTouchTheSwitchFile()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    QVERIFY(!QFile::exists(SwitchFile));
    Files::write(SwitchFile, "# mine\n");
    const FileSnapshot before = Files::snapshot(SwitchFile);
    QCOMPARE(daemon.set(Camera, true), QVariant(true));
    QVERIFY(Files::snapshot(SwitchFile) == before);
}

void TestPersistence::changeOutlivesTheDaemon_data()
{
    QTest::addColumn<bool>("isKilled");
    QTest::newRow("stopped") << false;
    QTest::newRow("killed at once") << true;
}

void TestPersistence::changeOutlivesTheDaemon()
{
    QFETCH(bool, isKilled);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    if (isKilled)
        daemon.process().kill(); // nothing but the reply was waited for
    else
        QCOMPARE(daemon.process().stop(), 0);
    const QByteArray content = Files::read(PolicyFile);

    QVERIFY(daemon.start());

    QCOMPARE(daemon.policy(Camera), QVariant(false));
    QCOMPARE(daemon.policy(QStringLiteral("BrowserEnabled")), QVariant(true));
    QCOMPARE(Files::read(PolicyFile), content);
}

void TestPersistence::directoryIsNotReadOnceTheFileIsThere()
{
    Files::write(QStringLiteral("/etc/policy/policy.d/seed.conf"),
                 "[policy]\nCameraEnabled=false\n");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.policy(Camera), QVariant(false));
    QVERIFY(Files::read(PolicyFile).startsWith("[policy]\nCameraEnabled=false\n"));
    QCOMPARE(daemon.set(Camera, true), QVariant(true));
    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(daemon.start());
    QCOMPARE(daemon.policy(Camera), QVariant(true));
    QCOMPARE(Files::read(QStringLiteral("/etc/policy/policy.d/seed.conf")),
             QByteArray("[policy]\nCameraEnabled=false\n"));
}

QTEST_GUILESS_MAIN(TestPersistence)
#include "tst_persistence.moc"
