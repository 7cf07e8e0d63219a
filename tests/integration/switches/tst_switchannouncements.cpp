// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");

} // namespace

/// A switch that changes by whatever route: the plugin announces it, the daemon applies it.
class TestSwitchAnnouncements : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void policyIsStoredValueAndSwitchValue_data();
    void policyIsStoredValueAndSwitchValue();
    void policiesComeInTheOrderOfTheListBeforeTheSwitch();
    void unchangedEffectIsAnnouncedAgain();
    void announcedValueCountsNotTheOneToRead();
    void otherSwitchesDoNotCount();
    void locksDoNotCount();
    void policyWithoutAValueIsOff();
    void numbersThatAreNoPolicies();
    void switchThatGovernsNothing_data();
    void switchThatGovernsNothing();
    void nothingIsSavedOrRecorded();
};

void TestSwitchAnnouncements::init()
{
    Files::reset();
}

void TestSwitchAnnouncements::policyIsStoredValueAndSwitchValue_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("value");
    QTest::newRow("true, on") << true << true;
    QTest::newRow("true, off") << true << false;
    QTest::newRow("false, on") << false << true;
    QTest::newRow("false, off") << false << false;
}

void TestSwitchAnnouncements::policyIsStoredValueAndSwitchValue()
{
    QFETCH(bool, stored);
    QFETCH(bool, value);
    Files::write(PolicyFile,
                 stored ? "[policy]\nCameraEnabled=true\n" : "[policy]\nCameraEnabled=false\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, !value);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(QFile::exists(CameraMarker), stored && !value);
    daemon.forget();

    plugin.setEntry(Cellular, QStringLiteral("value"), value);
    plugin.announce(Cellular, value);
    QCOMPARE(daemon.messages(),
             (QStringList{QLatin1String("PolicyChanged CameraEnabled ")
                              + QLatin1String(stored && value ? "true" : "false"),
                          QLatin1String("SwitchChanged cellular ")
                              + QLatin1String(value ? "true" : "false")}));
    QCOMPARE(QFile::exists(CameraMarker), stored && value);
    QCOMPARE(Caller().policy(Camera).value(), QVariant(stored && value));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestSwitchAnnouncements::policiesComeInTheOrderOfTheListBeforeTheSwitch()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {4, 1, 3, 4}, true);
    plugin.setSwitch(QStringLiteral("other"), {2}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.announce(Cellular, false);
    QCOMPARE(daemon.messages(),
             texts({"PolicyChanged WlanEnabled false", "PolicyChanged CameraEnabled false",
                    "PolicyChanged BluetoothEnabled false", "PolicyChanged WlanEnabled false",
                    "SwitchChanged cellular false"}));
}

void TestSwitchAnnouncements::unchangedEffectIsAnnouncedAgain()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(CameraMarker));

    plugin.announce(Cellular, true);
    plugin.announce(Cellular, true);
    const QStringList once =
        texts({"PolicyChanged CameraEnabled true", "SwitchChanged cellular true"});
    QCOMPARE(daemon.messages(), once + once);
    QVERIFY(QFile::exists(CameraMarker)); // and is enforced again
}

void TestSwitchAnnouncements::announcedValueCountsNotTheOneToRead()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    plugin.announce(Cellular, false);
    QCOMPARE(daemon.messages(),
             texts({"PolicyChanged CameraEnabled false", "SwitchChanged cellular false"}));
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(plugin.calls(before), texts({"keyPolicyTypes", "done"}));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true)); // a reader asks the plugin
}

void TestSwitchAnnouncements::otherSwitchesDoNotCount()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("a"), {1}, false);
    plugin.setSwitch(QStringLiteral("b"), {1}, false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(CameraMarker));

    for (const QString &key : texts({"a", "b"})) {
        QFile::remove(CameraMarker);
        daemon.forget();
        plugin.announce(key, true);
        QCOMPARE(daemon.messages(),
                 (QStringList{QStringLiteral("PolicyChanged CameraEnabled true"),
                              QStringLiteral("SwitchChanged %1 true").arg(key)}));
        QVERIFY(QFile::exists(CameraMarker));
        QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    }
}

void TestSwitchAnnouncements::locksDoNotCount()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, false);
    LockPlugin locks(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    locks.setLocked({Camera});
    daemon.forget();
    const int before = locks.mark();

    plugin.announce(Cellular, true);
    QCOMPARE(daemon.messages(),
             texts({"PolicyChanged CameraEnabled true", "SwitchChanged cellular true"}));
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(locks.calls(before), QStringList());
}

void TestSwitchAnnouncements::policyWithoutAValueIsOff()
{
    LockPlugin locks(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    locks.setLocked({Camera}); // so it is never stored
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    locks.setLocked({});
    daemon.forget();

    plugin.announce(Cellular, true);
    QCOMPARE(daemon.messages(),
             texts({"PolicyChanged CameraEnabled false", "SwitchChanged cellular true"}));
    QVERIFY(!QFile::exists(CameraMarker));
}

void TestSwitchAnnouncements::numbersThatAreNoPolicies()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {46, -1, 0, 1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.announce(Cellular, true);
    // An unknown number has no key; the number 0 has one, and a value like every key.
    QCOMPARE(daemon.messages(),
             texts({"PolicyChanged  false", "PolicyChanged  false", "PolicyChanged NoPolicy true",
                    "PolicyChanged CameraEnabled true", "SwitchChanged cellular true"}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestSwitchAnnouncements::switchThatGovernsNothing_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("empty list") << Cellular;
    QTest::newRow("unknown") << QStringLiteral("unknown");
}

void TestSwitchAnnouncements::switchThatGovernsNothing()
{
    QFETCH(QString, key);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    plugin.setSwitch(QStringLiteral("other"), {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.announce(key, false);
    QCOMPARE(daemon.messages(), QStringList(QStringLiteral("SwitchChanged %1 false").arg(key)));
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(QFile::exists(CameraMarker));
}

void TestSwitchAnnouncements::nothingIsSavedOrRecorded()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    const FileSnapshot policies = Files::snapshot(PolicyFile);

    plugin.announce(Cellular, false);
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(Files::snapshot(PolicyFile), policies);
    QVERIFY(!QFile::exists(SwitchFile));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("true"));
}

QTEST_GUILESS_MAIN(TestSwitchAnnouncements)
#include "tst_switchannouncements.moc"
