// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"
#include "support/watcheddaemon.h"

#include <QTest>

using namespace Support;

namespace {

QStringList announced(const QString &key, bool value)
{
    return {WatchedDaemon::announcement(key, value)};
}

} // namespace

class TestLockAnnouncements : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void lockIsAnnouncedAsFalse();
    void freedPolicyIsAnnouncedWithItsStoredValue_data();
    void freedPolicyIsAnnouncedWithItsStoredValue();
    void newsThatDoNotHoldAreIgnored_data();
    void newsThatDoNotHoldAreIgnored();
    void newsOfNoChangeArePassedOn();
    void newsOfAnotherSourceCountToo();
    void keyThatIsNotListedIsAnnouncedAsFree();
    void keyThatIsNotListedAndSaidLockedIsIgnored();
    void freedPolicyWithoutItsSwitchIsAnnouncedAsFalse();
    void freedPolicyWithoutAValueIsNotAnnounced();
    void newsFromAThreadArePassedOn();
    void nothingIsEnforcedOrWritten_data();
    void nothingIsEnforcedOrWritten();
};

void TestLockAnnouncements::lockIsAnnouncedAsFalse()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.setLocked({Camera});
    plugin.announce(Camera, true);

    QCOMPARE(daemon.announcements(), announced(Camera, false));
}

void TestLockAnnouncements::freedPolicyIsAnnouncedWithItsStoredValue_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("allowed") << true << announced(Camera, true);
    QTest::newRow("forbidden") << false << announced(Camera, false);
}

void TestLockAnnouncements::freedPolicyIsAnnouncedWithItsStoredValue()
{
    QFETCH(bool, stored);
    QFETCH(QStringList, expected);
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(Camera, stored));
    plugin.setLocked({Camera});
    daemon.forget();

    plugin.setLocked({});
    plugin.announce(Camera, false);

    QCOMPARE(daemon.announcements(), expected);
}

void TestLockAnnouncements::newsThatDoNotHoldAreIgnored_data()
{
    QTest::addColumn<bool>("isLocked");
    QTest::newRow("locked, it says, but it is free") << false;
    QTest::newRow("free, it says, but it is locked") << true;
}

void TestLockAnnouncements::newsThatDoNotHoldAreIgnored()
{
    QFETCH(bool, isLocked);
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setLocked(isLocked ? QStringList(Camera) : QStringList());
    daemon.forget();

    plugin.announce(Camera, !isLocked);

    QCOMPARE(daemon.announcements(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

void TestLockAnnouncements::newsOfNoChangeArePassedOn()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.announce(Camera, false);
    plugin.announce(Camera, false);

    QCOMPARE(daemon.announcements(), announced(Camera, true) + announced(Camera, true));
}

void TestLockAnnouncements::newsOfAnotherSourceCountToo()
{
    LockPlugin one(QStringLiteral("one.so"), QStringLiteral("one"), {Camera});
    LockPlugin two(QStringLiteral("two.so"), QStringLiteral("two"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    one.setLocked({Camera});
    two.setLocked({Camera});
    daemon.forget();

    two.setLocked({});
    two.announce(Camera, false);
    QCOMPARE(daemon.announcements(), QStringList());

    two.announce(Camera, true); // not by itself, but it is
    QCOMPARE(daemon.announcements(), announced(Camera, false));

    daemon.forget();
    one.setLocked({});
    one.announce(Camera, false);
    QCOMPARE(daemon.announcements(), announced(Camera, true));
}

void TestLockAnnouncements::keyThatIsNotListedIsAnnouncedAsFree()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setLocked({Microphone});
    daemon.forget();

    plugin.announce(Microphone, false);

    QCOMPARE(daemon.announcements(), announced(Microphone, true));
    QCOMPARE(plugin.calls().filter(QStringLiteral("policyIsLocked MicrophoneEnabled")),
             QStringList());
}

void TestLockAnnouncements::keyThatIsNotListedAndSaidLockedIsIgnored()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setLocked({Microphone});
    daemon.forget();

    plugin.announce(Microphone, true);

    QCOMPARE(daemon.announcements(), QStringList());
    QCOMPARE(Caller().policy(Microphone).value(), QVariant(true));
}

void TestLockAnnouncements::freedPolicyWithoutItsSwitchIsAnnouncedAsFalse()
{
    SwitchPlugin switches;
    switches.setSwitch(QStringLiteral("privacy"), {1}, false);
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.announce(Camera, false);

    QCOMPARE(daemon.announcements(), announced(Camera, false));
}

/// An announcement without a value cannot travel.
void TestLockAnnouncements::freedPolicyWithoutAValueIsNotAnnounced()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    plugin.setLocked({Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.setLocked({});
    plugin.announce(Camera, false);
    QCOMPARE(daemon.announcements(), QStringList());

    plugin.setLocked({Camera});
    plugin.announce(Camera, true);
    QCOMPARE(daemon.announcements(), announced(Camera, false));
}

void TestLockAnnouncements::newsFromAThreadArePassedOn()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.setLocked({Camera});
    plugin.announceFromThread(Camera, true);
    QCOMPARE(daemon.announcements(), announced(Camera, false));

    daemon.forget();
    plugin.announceFromThread(Camera, false);
    QCOMPARE(daemon.announcements(), QStringList());
}

void TestLockAnnouncements::nothingIsEnforcedOrWritten_data()
{
    QTest::addColumn<bool>("isLocked");
    QTest::newRow("locked") << true;
    QTest::newRow("freed") << false;
}

/// A lock changes what readers see, not what is in force.
void TestLockAnnouncements::nothingIsEnforcedOrWritten()
{
    QFETCH(bool, isLocked);
    const QStringList keys{Camera, Microphone, QStringLiteral("UsbDevicesEnabled"),
                           QStringLiteral("BrowserEnabled")};
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), keys);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setLocked(isLocked ? QStringList() : keys);
    daemon.forget();
    const FileSnapshot file = Files::snapshot(PolicyFile);
    const FileSnapshot marker = Files::snapshot(CameraMarker);

    plugin.setLocked(isLocked ? keys : QStringList());
    for (const QString &key : keys)
        plugin.announce(key, isLocked);

    QCOMPARE(daemon.announcements().size(), keys.size());
    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.monitor().calls(QStringLiteral("sendEventStringAlt")).size(), 0);
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(marker.exists);
    QVERIFY(Files::snapshot(CameraMarker) == marker);
    QVERIFY(Files::snapshot(PolicyFile) == file);
}

QTEST_GUILESS_MAIN(TestLockAnnouncements)
#include "tst_lockannouncements.moc"
