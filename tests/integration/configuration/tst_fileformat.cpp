// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/platformkeys.h"
#include "support/texts.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Seed = QStringLiteral("/etc/policy/policy.d/seed.conf");

QStringList usualLog()
{
    return texts({"warning|default|Failed to disable USB devices connection.",
                  "warning|default|Failed to disable USB devices connection."});
}

/// Policies as their recorder adds them to a file that holds @p already.
QByteArray defaultsBeside(const QStringList &already)
{
    QByteArray lines;
    const QStringList keys = platformKeys();
    for (const QString &key : keys) {
        if (!already.contains(key))
            lines += key.toLatin1()
                + (key == QLatin1String("UserReportExportEnabled") ? "=false\n" : "=true\n");
    }
    return lines;
}

} // namespace

/// What a file of policies may hold, how it is understood, and what its rewriting leaves of it.
class TestFileFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void valuesAreBooleans_data();
    void valuesAreBooleans();
    void linesThatDoNotNameThePolicy_data();
    void linesThatDoNotNameThePolicy();
    void badValueLeavesOthersAlone();
    void seedThatBreaksOffIsTakenUpToThere();
    void seedThatIsNoKeyFileIsPassedOver_data();
    void seedThatIsNoKeyFileIsPassedOver();
    void brokenSeedLeavesOtherSeedsAlone();
    void rewritingKeepsKeysAndGroups();
    void rewritingDropsCommentsAndBlankLines();
    void unknownKeyIsNotRead();
};

void TestFileFormat::init()
{
    Files::reset();
}

void TestFileFormat::valuesAreBooleans_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("allowed");
    // The default of the policy is true, so only what reads as false shows.
    QTest::newRow("false") << QByteArray("false") << false;
    QTest::newRow("0") << QByteArray("0") << false;
    QTest::newRow("false before blanks") << QByteArray("false  ") << false;
    QTest::newRow("false after blanks") << QByteArray("  false") << false;
    QTest::newRow("false before the end of a DOS line") << QByteArray("false\r") << false;
    QTest::newRow("true") << QByteArray("true") << true;
    QTest::newRow("1") << QByteArray("1") << true;
    QTest::newRow("no") << QByteArray("no") << true;
    QTest::newRow("off") << QByteArray("off") << true;
    QTest::newRow("False") << QByteArray("False") << true;
    QTest::newRow("FALSE") << QByteArray("FALSE") << true;
    QTest::newRow("falsely") << QByteArray("falsely") << true;
    QTest::newRow("false with a remark") << QByteArray("false # for good") << true;
    QTest::newRow("list") << QByteArray("false;false;") << true;
    QTest::newRow("quoted") << QByteArray("\"false\"") << true;
    QTest::newRow("00") << QByteArray("00") << true;
    QTest::newRow("-1") << QByteArray("-1") << true;
    QTest::newRow("nothing") << QByteArray() << true;
    QTest::newRow("no text") << QByteArray("\xff\xfe") << true;
}

void TestFileFormat::valuesAreBooleans()
{
    QFETCH(const QByteArray, value);
    QFETCH(const bool, allowed);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=" + value + "\nMicrophoneEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(allowed));
    QCOMPARE(client.policy(QStringLiteral("MicrophoneEnabled")), QVariant(false));
    // Whatever stood there, what is recorded is a plain value.
    QCOMPARE(Files::values(PolicyFile).value(Camera),
             allowed ? QStringLiteral("true") : QStringLiteral("false"));
    QCOMPARE(daemon.log(), usualLog());
}

void TestFileFormat::linesThatDoNotNameThePolicy_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("another group") << QByteArray("[switch]\nCameraEnabled=false\n");
    QTest::newRow("group in other letters") << QByteArray("[Policy]\nCameraEnabled=false\n");
    QTest::newRow("group before and after")
        << QByteArray("[policy]\n[other]\nCameraEnabled=false\n[policy]\n");
    QTest::newRow("key in other letters") << QByteArray("[policy]\ncameraEnabled=false\n");
    QTest::newRow("key with more to it") << QByteArray("[policy]\nCameraEnabledX=false\n");
    QTest::newRow("comment") << QByteArray("[policy]\n#CameraEnabled=false\n");
    QTest::newRow("translation") << QByteArray("[policy]\nCameraEnabled[de]=false\n");
    QTest::newRow("number of the policy") << QByteArray("[policy]\n1=false\n");
    QTest::newRow("empty group") << QByteArray("[policy]\n");
    QTest::newRow("overruled below") << QByteArray("[policy]\nCameraEnabled=false\n"
                                                   "CameraEnabled=true\n");
}

void TestFileFormat::linesThatDoNotNameThePolicy()
{
    QFETCH(const QByteArray, content);
    Files::write(PolicyFile, content);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("true"));
    QCOMPARE(daemon.log(), usualLog());
}

void TestFileFormat::badValueLeavesOthersAlone()
{
    Files::write(PolicyFile,
                 "[policy]\nCameraEnabled=yes\nUserReportExportEnabled=yes\n"
                 "MessagesEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(true));
    QCOMPARE(client.policy(QStringLiteral("UserReportExportEnabled")), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("MessagesEnabled")), QVariant(false));
}

void TestFileFormat::seedThatBreaksOffIsTakenUpToThere()
{
    // Nobody looks whether the file could be loaded as a whole.
    Files::write(Seed,
                 "[policy]\nCameraEnabled=false\nthis is no line of a key file\n"
                 "MicrophoneEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("MicrophoneEnabled")), QVariant(true));
    QCOMPARE(daemon.log(), usualLog());
}

void TestFileFormat::seedThatIsNoKeyFileIsPassedOver_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("text") << QByteArray("CameraEnabled: false\n");
    QTest::newRow("no group") << QByteArray("CameraEnabled=false\n");
    QTest::newRow("group without its end") << QByteArray("[policy\nCameraEnabled=false\n");
    QTest::newRow("binary") << QByteArray("\x7f"
                                          "ELF\0\0[policy]\nCameraEnabled=false\n",
                                          36);
}

void TestFileFormat::seedThatIsNoKeyFileIsPassedOver()
{
    QFETCH(const QByteArray, content);
    Files::write(Seed, content);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QCOMPARE(daemon.log(), usualLog());
    QCOMPARE(Files::read(Seed), content);
}

void TestFileFormat::brokenSeedLeavesOtherSeedsAlone()
{
    Files::write(Seed, "no key file");
    Files::write(QStringLiteral("/etc/policy/policy.d/a"), "[policy]\nCameraEnabled=false\n");
    Files::write(QStringLiteral("/etc/policy/policy.d/z"), "[policy]\nMicrophoneEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("MicrophoneEnabled")), QVariant(false));
}

void TestFileFormat::rewritingKeepsKeysAndGroups()
{
    Files::write(PolicyFile,
                 "[first]\nanswer=42\n\n[policy]\nSomethingElse=maybe\n"
                 "CameraEnabled=0\n\n[last]\nCameraEnabled=true\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Files::read(PolicyFile),
             "[first]\nanswer=42\n\n[policy]\nSomethingElse=maybe\n"
             "CameraEnabled=false\n"
                 + defaultsBeside({Camera}) + "\n[last]\nCameraEnabled=true\n");
}

void TestFileFormat::rewritingDropsCommentsAndBlankLines()
{
    Files::write(PolicyFile,
                 "# of the device's owner\n\n[policy]\n# no pictures\n\n"
                 "CameraEnabled=false\n\n# the end\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Files::read(PolicyFile), "[policy]\nCameraEnabled=false\n" + defaultsBeside({Camera}));
}

void TestFileFormat::unknownKeyIsNotRead()
{
    Files::write(PolicyFile, "[policy]\nTelepathyEnabled=true\ncameraenabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Client().haveNoValue(texts({"TelepathyEnabled", "cameraenabled"})));
    QCOMPARE(Files::values(PolicyFile).size(), platformKeys().size() + 2);
}

QTEST_GUILESS_MAIN(TestFileFormat)
#include "tst_fileformat.moc"
