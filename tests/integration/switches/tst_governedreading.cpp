// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/cameraswitches.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Other = QStringLiteral("Other"); // the name of no policy: of type 0

} // namespace

/// Reading policies that switches govern: each of the switches counts.
class TestGovernedReading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void allSwitchesCount_data();
    void allSwitchesCount();
    void readingDoesNotAskOtherSwitches();
    void readingTakesAFailingSwitchForOff();
    void readingAsksSwitchesBeforeLocks();
    void readingNoPolicyTypeAsksSwitchesOfTypeZero();
    void startEnforcesWhatReadersSee_data();
    void startEnforcesWhatReadersSee();
};

void TestGovernedReading::init()
{
    Files::reset();
}

void TestGovernedReading::allSwitchesCount_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("first");
    QTest::addColumn<bool>("second");
    QTest::addColumn<int>("questions");
    QTest::addColumn<bool>("value");

    QTest::newRow("true, on, on") << true << true << true << 2 << true;
    QTest::newRow("true, on, off") << true << true << false << 2 << false;
    QTest::newRow("true, off, on") << true << false << true << 1 << false;
    QTest::newRow("true, off, off") << true << false << false << 1 << false;
    QTest::newRow("false, on, on") << false << true << true << 2 << false;
    QTest::newRow("false, off, on") << false << false << true << 1 << false;
}

void TestGovernedReading::allSwitchesCount()
{
    QFETCH(bool, stored);
    QFETCH(bool, first);
    QFETCH(bool, second);
    QFETCH(int, questions);
    QFETCH(bool, value);
    Files::write(PolicyFile,
                 stored ? "[policy]\nCameraEnabled=true\n" : "[policy]\nCameraEnabled=false\n");
    CameraSwitches plugin;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QStringList switches = plugin.inOrder();
    plugin.setInOrder(first, second);
    const int before = plugin.mark();

    const Reply reply = Caller().policy(Camera);
    QCOMPARE(reply.value(), QVariant(value));
    // Each at most once, however often its list names the policy.
    QCOMPARE(plugin.calls(before), plugin.callsFor(switches.mid(0, questions)));
}

void TestGovernedReading::readingDoesNotAskOtherSwitches()
{
    CameraSwitches plugin;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    QCOMPARE(Caller().policy(QStringLiteral("WlanEnabled")).value(), QVariant(true));
    QCOMPARE(plugin.calls(before), texts({"keyPolicyTypes"}));
}

void TestGovernedReading::readingTakesAFailingSwitchForOff()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("a"), {1}, 4);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QCOMPARE(daemon.logged(),
             texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: \"a\"",
                    "warning|default|Return code: 4"}));

    plugin.setEntry(QStringLiteral("a"), QStringLiteral("value"), QStringLiteral("true"));
    daemon.forget();
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QCOMPARE(daemon.logged(), texts({"warning|default|Unknown value type \"a\""}));
}

void TestGovernedReading::readingAsksSwitchesBeforeLocks()
{
    SwitchPlugin switches;
    switches.setSwitch(QStringLiteral("a"), {1}, false);
    LockPlugin locks(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    locks.setLocked({Camera});
    int before = locks.mark();

    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QCOMPARE(locks.calls(before), QStringList());

    switches.setEntry(QStringLiteral("a"), QStringLiteral("value"), true);
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QVERIFY(locks.mark() > before);

    locks.setLocked({});
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestGovernedReading::readingNoPolicyTypeAsksSwitchesOfTypeZero()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("zero"), {0}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setPolicy(Other, true).value(), QVariant(true));
    QCOMPARE(Caller().policy(Other).value(), QVariant(true));

    plugin.setEntry(QStringLiteral("zero"), QStringLiteral("value"), false);
    QCOMPARE(Caller().policy(Other).value(), QVariant(false));
    // A key that nobody has stored, too: without the switch it would have no value.
    QCOMPARE(Caller().policy(QStringLiteral("cameraenabled")).value(), QVariant(false));
    QCOMPARE(Caller().policy(QStringLiteral("NoPolicy")).value(), QVariant(false));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestGovernedReading::startEnforcesWhatReadersSee_data()
{
    QTest::addColumn<bool>("a");
    QTest::addColumn<bool>("b");
    QTest::newRow("all on") << true << true;
    QTest::newRow("a off") << false << true;
    QTest::newRow("b off") << true << false;
}

/// The last word at the start is that of all switches, whichever of them is the first.
void TestGovernedReading::startEnforcesWhatReadersSee()
{
    QFETCH(bool, a);
    QFETCH(bool, b);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=true\n");
    CameraSwitches plugin;
    plugin.setEntry(QStringLiteral("a"), QStringLiteral("value"), a);
    plugin.setEntry(QStringLiteral("b"), QStringLiteral("value"), b);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(QFile::exists(CameraMarker), a && b);
    QCOMPARE(Caller().policy(Camera).value(), QVariant(a && b));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("true"));
}

QTEST_GUILESS_MAIN(TestGovernedReading)
#include "tst_governedreading.moc"
