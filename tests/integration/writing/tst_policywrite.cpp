// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include "simulator/devicesentry.h"

#include <QtTest>

using namespace Support;

class TestPolicyWrite : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void newValueIsStoredSavedRecordedAndAnnounced();
    void sameValueIsSavedAndRecordedButNeitherEnforcedNorAnnounced();
    void valueThatReadsTheSameCountsAsTheSame_data();
    void valueThatReadsTheSameCountsAsTheSame();
    void everyChangeIsAnnouncedOnce();
    void unknownKeyIsStoredSavedAndAnnouncedButNotEnforced();
    void noPolicyKeyIsNotEnforced();
    void keyIsComparedWithItsLetterCase();
    void lockedPolicyIsRefusedSilently();
    void refusedCallerChangesNothing();
};

void TestPolicyWrite::newValueIsStoredSavedRecordedAndAnnounced()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.policy(Camera), QVariant(true));
    daemon.forget();

    QCOMPARE(daemon.set(Camera, false), QVariant(true));

    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(Camera, Yes, No), daemon.announcement(Camera, false), ReplyTrue}));
    QCOMPARE(daemon.recorded(), QStringList(daemon.eventText(Camera, Yes, No)));
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(Files::values(PolicyFile).value(Camera), No);
    QCOMPARE(daemon.policy(Camera), QVariant(false));
}

void TestPolicyWrite::sameValueIsSavedAndRecordedButNeitherEnforcedNorAnnounced()
{
    Simulator::DeviceSentry sentry;
    QVERIFY(sentry.appear());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot before = Files::snapshot(PolicyFile);

    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));

    QCOMPARE(daemon.said(), QStringList({daemon.event(UsbDevices, Yes, Yes), ReplyTrue}));
    QCOMPARE(daemon.recorded(), QStringList(daemon.eventText(UsbDevices, Yes, Yes)));
    const FileSnapshot after = Files::snapshot(PolicyFile);
    QVERIFY(after.inode != before.inode);
    QCOMPARE(after.content, before.content);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestPolicyWrite::valueThatReadsTheSameCountsAsTheSame_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<QVariant>("written");
    QTest::addColumn<QString>("text");
    QTest::newRow("1") << true << QVariant(1) << QStringLiteral("1");
    QTest::newRow("text true") << true << QVariant(Yes) << Yes;
    QTest::newRow("any text") << true << QVariant(QStringLiteral("yes")) << QStringLiteral("yes");
    QTest::newRow("0") << false << QVariant(0) << QStringLiteral("0");
    QTest::newRow("text false") << false << QVariant(No) << No;
}

void TestPolicyWrite::valueThatReadsTheSameCountsAsTheSame()
{
    QFETCH(bool, stored);
    QFETCH(QVariant, written);
    QFETCH(QString, text);
    Files::write(PolicyFile,
                 stored ? "[policy]\nCameraEnabled=true\n" : "[policy]\nCameraEnabled=false\n");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.set(Camera, written), QVariant(true));

    const QString oldText = stored ? Yes : No;
    QCOMPARE(daemon.said(), QStringList({daemon.event(Camera, oldText, text), ReplyTrue}));
    QCOMPARE(daemon.policy(Camera).userType(), int(QMetaType::Bool)); // the old value stays
    QCOMPARE(Files::values(PolicyFile).value(Camera), oldText);
}

void TestPolicyWrite::everyChangeIsAnnouncedOnce()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    for (const bool value : {false, true, false})
        QCOMPARE(daemon.set(Camera, value), QVariant(true));

    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(Camera, Yes, No), daemon.announcement(Camera, false), ReplyTrue,
                  daemon.event(Camera, No, Yes), daemon.announcement(Camera, true), ReplyTrue,
                  daemon.event(Camera, Yes, No), daemon.announcement(Camera, false), ReplyTrue}));
}

void TestPolicyWrite::unknownKeyIsStoredSavedAndAnnouncedButNotEnforced()
{
    const QString key = QStringLiteral("com.example.Wish");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.set(key, true), QVariant(true));

    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(key, QString(), Yes), daemon.announcement(key, true), ReplyTrue}));
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(daemon.policy(key), QVariant(true));
    QCOMPARE(Files::values(PolicyFile).value(key), Yes);
}

void TestPolicyWrite::noPolicyKeyIsNotEnforced()
{
    const QString key = QStringLiteral("NoPolicy");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(key, false), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(key, Yes, No), daemon.announcement(key, false), ReplyTrue}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestPolicyWrite::keyIsComparedWithItsLetterCase()
{
    const QString key = QStringLiteral("cameraEnabled");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(key, false), QVariant(true));
    QCOMPARE(daemon.policy(Camera), QVariant(true));
    QVERIFY(QFile::exists(CameraMarker));
    const auto values = Files::values(PolicyFile);
    QCOMPARE(values.value(Camera), Yes);
    QCOMPARE(values.value(key), No);
}

void TestPolicyWrite::lockedPolicyIsRefusedSilently()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    lock.setLocked({Camera});
    const FileSnapshot before = Files::snapshot(PolicyFile);

    for (const bool value : {true, false})
        QCOMPARE(daemon.set(Camera, value), QVariant(false));

    QCOMPARE(daemon.said(),
             QStringList({QStringLiteral("reply false"), QStringLiteral("reply false")}));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(Files::snapshot(PolicyFile) == before);
    QVERIFY(QFile::exists(CameraMarker));
    lock.setLocked({});
    QCOMPARE(daemon.policy(Camera), QVariant(true));
}

void TestPolicyWrite::refusedCallerChangesNothing()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot before = Files::snapshot(PolicyFile);

    Caller caller(Identity::of("guest"));
    const Reply reply = caller.setPolicy(Camera, false);

    QCOMPARE(reply.errorName, QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
    QCOMPARE(daemon.said(),
             QStringList(QStringLiteral("error org.freedesktop.DBus.Error.AccessDenied")));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(Files::snapshot(PolicyFile) == before);
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(daemon.policy(Camera), QVariant(true));
}

QTEST_GUILESS_MAIN(TestPolicyWrite)
#include "tst_policywrite.moc"
