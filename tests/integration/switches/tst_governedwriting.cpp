// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/cameraswitches.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Other = QStringLiteral("Other"); // the name of no policy: of type 0

} // namespace

/// Writing policies that switches govern: the first of the switches counts, and no other.
class TestGovernedWriting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void firstSwitchCounts_data();
    void firstSwitchCounts();
    void writingFalseDoesNotAskSwitches();
    void writingTakesAFailingSwitchForOff();
    void writingNoPolicyTypeAsksSwitchesOfTypeZero();
    void storeKeepsTrueUnderASwitchThatIsOff();
};

void TestGovernedWriting::init()
{
    Files::reset();
}

void TestGovernedWriting::firstSwitchCounts_data()
{
    QTest::addColumn<bool>("first");
    QTest::addColumn<bool>("second");
    QTest::addColumn<int>("questions"); // of the reader, for the old value in the event
    QTest::addColumn<bool>("enforced");
    QTest::addColumn<bool>("readable");

    QTest::newRow("on, on") << true << true << 2 << true << true;
    QTest::newRow("on, off") << true << false << 2 << true << false;
    QTest::newRow("off, on") << false << true << 1 << false << false;
    QTest::newRow("off, off") << false << false << 1 << false << false;
}

void TestGovernedWriting::firstSwitchCounts()
{
    QFETCH(bool, first);
    QFETCH(bool, second);
    QFETCH(int, questions);
    QFETCH(bool, enforced);
    QFETCH(bool, readable);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    CameraSwitches plugin;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QStringList switches = plugin.inOrder();
    plugin.setInOrder(first, second);
    QVERIFY(!QFile::exists(CameraMarker));
    daemon.forget();
    const int before = plugin.mark();

    Caller caller;
    QCOMPARE(caller.setPolicy(Camera, true).value(), QVariant(true));
    QStringList messages(ProcessQuery);
    messages << eventCall("CameraEnabled changed. Old value false. New value true.") << ProcessQuery
             << QLatin1String("PolicyChanged CameraEnabled ")
            + QLatin1String(enforced ? "true" : "false")
             << QStringLiteral("return true");
    QCOMPARE(daemon.messages(caller.busName()), messages);
    QCOMPARE(plugin.calls(before),
             plugin.callsFor(switches.mid(0, questions)) + plugin.callsFor(switches.mid(0, 1)));
    QCOMPARE(QFile::exists(CameraMarker), enforced);
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("true"));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(readable));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestGovernedWriting::writingFalseDoesNotAskSwitches()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("a"), {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    QCOMPARE(Caller().setPolicy(Camera, false).value(), QVariant(true));
    // The one question is the reader's, for the old value in the event.
    QCOMPARE(plugin.calls(before), texts({"keyPolicyTypes", "keyValue a", "keyPolicyTypes"}));
}

void TestGovernedWriting::writingTakesAFailingSwitchForOff()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("a"), {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setEntry(QStringLiteral("a"), QStringLiteral("value"), 9);
    daemon.forget();

    Caller caller;
    QCOMPARE(caller.setPolicy(Camera, true).value(), QVariant(true));
    QVERIFY(daemon.messages().contains(QStringLiteral("PolicyChanged CameraEnabled false")));
    const QStringList failure =
        texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: \"a\"",
               "warning|default|Return code: 9"});
    QCOMPARE(daemon.logged(), failure + failure); // for the old value, and for the new one
    QVERIFY(!QFile::exists(CameraMarker));
}

void TestGovernedWriting::writingNoPolicyTypeAsksSwitchesOfTypeZero()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("zero"), {0}, false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().setPolicy(Other, true).value(), QVariant(true));
    QVERIFY(daemon.messages().contains(QStringLiteral("PolicyChanged Other false")));
    QCOMPARE(Files::values(PolicyFile).value(Other), QStringLiteral("true"));
}

void TestGovernedWriting::storeKeepsTrueUnderASwitchThatIsOff()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("a"), {1}, false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setPolicy(Camera, true).value(), QVariant(true));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QVERIFY(!QFile::exists(CameraMarker));
    daemon.forget();

    // The same value again is no change, although readers see another one.
    QCOMPARE(Caller().setPolicy(Camera, true).value(), QVariant(true));
    QCOMPARE(daemon.recorded(),
             texts({"Policy CameraEnabled changed. Old value false. New value true."}));
    QVERIFY(!daemon.messages().join(QString()).contains(QStringLiteral("PolicyChanged")));

    QCOMPARE(Caller().setSwitch(QStringLiteral("a"), true).value(), QVariant(true));
    QVERIFY(daemon.messages().contains(QStringLiteral("PolicyChanged CameraEnabled true")));
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

QTEST_GUILESS_MAIN(TestGovernedWriting)
#include "tst_governedwriting.moc"
