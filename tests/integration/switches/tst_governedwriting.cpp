// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/files.h"
#include "support/observeddaemon.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Camera = QStringLiteral("CameraEnabled");
const QString Other = QStringLiteral("Other"); // the name of no policy: of type 0
const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
const QString CameraMarker = QStringLiteral("/var/lib/govd/camera_enabled");

/// Adds two switches that govern the camera, and one that does not.
void addSwitches(SwitchPlugin &plugin)
{
    plugin.setSwitch(QStringLiteral("a"), {2, 1}, true);
    plugin.setSwitch(QStringLiteral("b"), {1, 3, 1}, true);
    plugin.setSwitch(QStringLiteral("c"), {2}, false);
}

/// The two switches of the camera in the order of the running daemon's table.
QStringList cameraSwitches()
{
    QStringList keys =
        Caller().call(QStringLiteral("Switch"), QStringLiteral("Keys"), {}).value().toStringList();
    keys.removeAll(QStringLiteral("c"));
    return keys;
}

QStringList asked(const QStringList &switches)
{
    QStringList calls;
    for (const QString &key : switches)
        calls.append(QLatin1String("keyValue ") + key);
    return calls;
}

QStringList withTable(const QStringList &switches)
{
    return texts({"keyPolicyTypes"}) + asked(switches);
}

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
    SwitchPlugin plugin;
    addSwitches(plugin);
    ObservedDaemon daemon;
    QVERIFY(daemon.start());
    const QStringList switches = cameraSwitches();
    plugin.setEntry(switches.at(0), QStringLiteral("value"), first);
    plugin.setEntry(switches.at(1), QStringLiteral("value"), second);
    QVERIFY(!QFile::exists(CameraMarker));
    daemon.forget();
    const int before = plugin.mark();

    Caller caller;
    QCOMPARE(caller.setPolicy(Camera, true).value(), QVariant(true));
    QStringList messages = texts({"GetConnectionUnixProcessID caller"});
    messages << eventCall("CameraEnabled changed. Old value false. New value true.")
             << texts({"GetConnectionUnixProcessID caller"})
             << QLatin1String("PolicyChanged CameraEnabled ")
            + QLatin1String(enforced ? "true" : "false")
             << QStringLiteral("return true");
    QCOMPARE(daemon.messages(caller.busName()), messages);
    QCOMPARE(plugin.calls(before),
             withTable(switches.mid(0, questions)) + withTable(switches.mid(0, 1)));
    QCOMPARE(QFile::exists(CameraMarker), enforced);
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("true"));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(readable));
    QCOMPARE(daemon.log(), QStringList());
}

void TestGovernedWriting::writingFalseDoesNotAskSwitches()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("a"), {1}, true);
    ObservedDaemon daemon;
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
    ObservedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setEntry(QStringLiteral("a"), QStringLiteral("value"), 9);
    daemon.forget();

    Caller caller;
    QCOMPARE(caller.setPolicy(Camera, true).value(), QVariant(true));
    QVERIFY(daemon.messages().contains(QStringLiteral("PolicyChanged CameraEnabled false")));
    const QStringList failure =
        texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: \"a\"",
               "warning|default|Return code: 9"});
    QCOMPARE(daemon.log(), failure + failure); // for the old value, and for the new one
    QVERIFY(!QFile::exists(CameraMarker));
}

void TestGovernedWriting::writingNoPolicyTypeAsksSwitchesOfTypeZero()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("zero"), {0}, false);
    ObservedDaemon daemon;
    QVERIFY(daemon.start());
    daemon.forget();

    QCOMPARE(Caller().setPolicy(Other, true).value(), QVariant(true));
    QVERIFY(daemon.messages().contains(QStringLiteral("PolicyChanged Other false")));
    QCOMPARE(Files::values(PolicyFile).value(Other), QStringLiteral("true"));
}

void TestGovernedWriting::storeKeepsTrueUnderASwitchThatIsOff()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("a"), {1}, false);
    ObservedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setPolicy(Camera, true).value(), QVariant(true));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QVERIFY(!QFile::exists(CameraMarker));
    daemon.forget();

    // The same value again is no change, although readers see another one.
    QCOMPARE(Caller().setPolicy(Camera, true).value(), QVariant(true));
    QCOMPARE(daemon.events(),
             texts({"Policy CameraEnabled changed. Old value false. New value true."}));
    QVERIFY(!daemon.messages().join(QString()).contains(QStringLiteral("PolicyChanged")));

    QCOMPARE(Caller().setSwitch(QStringLiteral("a"), true).value(), QVariant(true));
    QVERIFY(daemon.messages().contains(QStringLiteral("PolicyChanged CameraEnabled true")));
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

QTEST_GUILESS_MAIN(TestGovernedWriting)
#include "tst_governedwriting.moc"
