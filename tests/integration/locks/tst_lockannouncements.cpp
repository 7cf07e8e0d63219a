// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/enforcement.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"

#include <QTest>

using Support::Caller;
using Support::Enforcement;
using Support::LockPlugin;

namespace {

const QString Camera = QStringLiteral("CameraEnabled");
const QString Microphone = QStringLiteral("MicrophoneEnabled");
const QString CameraMarker = QStringLiteral("/var/lib/govd/camera_enabled");

QStringList announced(const QString &key, const char *value)
{
    return QStringList(QStringLiteral("PolicyChanged [\"%1\",%2]").arg(key, QLatin1String(value)));
}

} // namespace

class TestLockAnnouncements : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    plugin.setLocked({Camera});
    plugin.announce(Camera, true);

    QCOMPARE(device.announcements(), announced(Camera, "false"));
}

void TestLockAnnouncements::freedPolicyIsAnnouncedWithItsStoredValue_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("allowed") << true << announced(Camera, "true");
    QTest::newRow("forbidden") << false << announced(Camera, "false");
}

void TestLockAnnouncements::freedPolicyIsAnnouncedWithItsStoredValue()
{
    QFETCH(bool, stored);
    QFETCH(QStringList, expected);
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(Camera, stored));
    plugin.setLocked({Camera});
    device.forget();

    plugin.setLocked({});
    plugin.announce(Camera, false);

    QCOMPARE(device.announcements(), expected);
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
    Enforcement device;
    QVERIFY(device.start());
    plugin.setLocked(isLocked ? QStringList(Camera) : QStringList());
    device.forget();

    plugin.announce(Camera, !isLocked);

    QCOMPARE(device.announcements(), QStringList());
    QCOMPARE(device.log(), QStringList());
}

void TestLockAnnouncements::newsOfNoChangeArePassedOn()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    plugin.announce(Camera, false);
    plugin.announce(Camera, false);

    QCOMPARE(device.announcements(), announced(Camera, "true") + announced(Camera, "true"));
}

void TestLockAnnouncements::newsOfAnotherSourceCountToo()
{
    LockPlugin one(QStringLiteral("one.so"), QStringLiteral("one"), {Camera});
    LockPlugin two(QStringLiteral("two.so"), QStringLiteral("two"), {Camera});
    Enforcement device;
    QVERIFY(device.start());
    one.setLocked({Camera});
    two.setLocked({Camera});
    device.forget();

    two.setLocked({});
    two.announce(Camera, false);
    QCOMPARE(device.announcements(), QStringList());

    two.announce(Camera, true); // not by itself, but it is
    QCOMPARE(device.announcements(), announced(Camera, "false"));

    device.forget();
    one.setLocked({});
    one.announce(Camera, false);
    QCOMPARE(device.announcements(), announced(Camera, "true"));
}

void TestLockAnnouncements::keyThatIsNotListedIsAnnouncedAsFree()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Enforcement device;
    QVERIFY(device.start());
    plugin.setLocked({Microphone});
    device.forget();

    plugin.announce(Microphone, false);

    QCOMPARE(device.announcements(), announced(Microphone, "true"));
    QCOMPARE(plugin.calls().filter(QStringLiteral("policyIsLocked MicrophoneEnabled")),
             QStringList());
}

void TestLockAnnouncements::keyThatIsNotListedAndSaidLockedIsIgnored()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Enforcement device;
    QVERIFY(device.start());
    plugin.setLocked({Microphone});
    device.forget();

    plugin.announce(Microphone, true);

    QCOMPARE(device.announcements(), QStringList());
    QCOMPARE(Caller().policy(Microphone).value(), QVariant(true));
}

void TestLockAnnouncements::freedPolicyWithoutItsSwitchIsAnnouncedAsFalse()
{
    Support::SwitchPlugin switches;
    switches.setSwitch(QStringLiteral("privacy"), {1}, false);
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    plugin.announce(Camera, false);

    QCOMPARE(device.announcements(), announced(Camera, "false"));
}

/// An announcement without a value cannot travel.
void TestLockAnnouncements::freedPolicyWithoutAValueIsNotAnnounced()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    plugin.setLocked({Camera});
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    plugin.setLocked({});
    plugin.announce(Camera, false);
    QCOMPARE(device.announcements(), QStringList());

    plugin.setLocked({Camera});
    plugin.announce(Camera, true);
    QCOMPARE(device.announcements(), announced(Camera, "false"));
}

void TestLockAnnouncements::newsFromAThreadArePassedOn()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    plugin.setLocked({Camera});
    plugin.announceFromThread(Camera, true);
    QCOMPARE(device.announcements(), announced(Camera, "false"));

    device.forget();
    plugin.announceFromThread(Camera, false);
    QCOMPARE(device.announcements(), QStringList());
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
    Enforcement device;
    QVERIFY(device.start());
    plugin.setLocked(isLocked ? QStringList() : keys);
    device.forget();
    const Support::FileSnapshot file =
        Support::Files::snapshot(QStringLiteral("/etc/policy/policy.conf"));
    const Support::FileSnapshot marker = Support::Files::snapshot(CameraMarker);

    plugin.setLocked(isLocked ? keys : QStringList());
    for (const QString &key : keys)
        plugin.announce(key, isLocked);

    QCOMPARE(device.announcements().size(), keys.size());
    QCOMPARE(device.calls(), QStringList());
    QCOMPARE(device.monitor().calls(QStringLiteral("sendEventStringAlt")).size(), 0);
    QCOMPARE(device.log(), QStringList());
    QVERIFY(marker.exists);
    QVERIFY(Support::Files::snapshot(CameraMarker) == marker);
    QVERIFY(Support::Files::snapshot(QStringLiteral("/etc/policy/policy.conf")) == file);
}

QTEST_GUILESS_MAIN(TestLockAnnouncements)
#include "tst_lockannouncements.moc"
