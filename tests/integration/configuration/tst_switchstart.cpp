// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "simulator/servicethread.h"
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/mount.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");
const QString Radio = QStringLiteral("radio");
const QString SeedFile = QStringLiteral("/etc/policy/switch.d/seed");

} // namespace

/// What switches do to a start, and a start to switches.
class TestSwitchStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void switchValuesAreRecordedAndPolicyValuesAreNot_data();
    void switchValuesAreRecordedAndPolicyValuesAreNot();
    void restartKeepsValues();
    void unsavableValueStaysWithThePlugin();
    void enforcementsOfTheStart_data();
    void enforcementsOfTheStart();
    void failingSwitchForcesItsPoliciesOff();
    void announcementLaterComesToTheBus();
};

void TestSwitchStart::init()
{
    Files::reset();
}

void TestSwitchStart::switchValuesAreRecordedAndPolicyValuesAreNot_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("single file") << SwitchFile;
    QTest::newRow("directory") << SeedFile;
}

void TestSwitchStart::switchValuesAreRecordedAndPolicyValuesAreNot()
{
    QFETCH(QString, path);
    Files::write(path, "[policy]\nradio=false\ncellular=true\n");
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    plugin.setSwitch(Radio, {3}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(daemon.recorded(),
             texts({"Policy radio changed. Old value true. New value false.",
                    "Policy cellular changed. Old value true. New value true."}));
    QCOMPARE(daemon.messages().filter(QStringLiteral("sendEventStringAlt")),
             (QStringList{eventCall("radio changed. Old value true. New value false."),
                          eventCall("cellular changed. Old value true. New value true.")}));
    QCOMPARE(daemon.complaints(), QStringList());
}

void TestSwitchStart::restartKeepsValues()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    plugin.setSwitch(Radio, {3}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setSwitch(Cellular, false).value(), QVariant(true));
    QCOMPARE(daemon.process().stop(), 0);

    plugin.setEntry(Cellular, QStringLiteral("value"), true); // a plugin without a memory
    const int before = plugin.mark();
    daemon.forget();
    QVERIFY(daemon.startObserved());
    QCOMPARE(plugin.calls(before).filter(QStringLiteral("setKeyValue")),
             texts({"setKeyValue cellular false"}));
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
    QCOMPARE(Caller().switchValue(Radio).value(), QVariant(true));
    QCOMPARE(Caller().policy(QStringLiteral("CameraEnabled")).value(), QVariant(false));
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(daemon.recorded(),
             texts({"Policy cellular changed. Old value true. New value false."}));
}

void TestSwitchStart::unsavableValueStaysWithThePlugin()
{
    Files::write(SwitchFile, "[policy]\ncellular=false\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    const Mount disk = Mount::readOnly(QStringLiteral("/etc/policy"));
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    const QStringList log = daemon.complaints();
    QVERIFY(log.at(0).startsWith(QLatin1String("warning|default|Error saving key file ")));
    QVERIFY(log.at(0).contains(SwitchFile));
    QCOMPARE(log.at(1),
             QStringLiteral("warning|default|Failed to save configuration to file "
                            "\"/etc/policy/switch.conf\""));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(plugin.value(Cellular), QJsonValue(false));
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
}

void TestSwitchStart::enforcementsOfTheStart_data()
{
    QTest::addColumn<QByteArray>("file"); // of the switch
    QTest::addColumn<QString>("announce");
    QTest::addColumn<QList<bool>>("enforced");

    const QString inside = QStringLiteral("inside");
    const QString never = QStringLiteral("never");
    // As the switch is announced, the policy has no value yet; then come its default and the pass
    // over all policies.
    QTest::newRow("no file") << QByteArray() << inside << QList<bool>{true, true};
    QTest::newRow("on, announced")
        << QByteArray("[policy]\nradio=true\n") << inside << QList<bool>{false, true, true};
    QTest::newRow("off, announced")
        << QByteArray("[policy]\nradio=false\n") << inside << QList<bool>{false, false, false};
    QTest::newRow("on, not announced")
        << QByteArray("[policy]\nradio=true\n") << never << QList<bool>{true, true};
    QTest::newRow("off, not announced")
        << QByteArray("[policy]\nradio=false\n") << never << QList<bool>{false, false};
}

void TestSwitchStart::enforcementsOfTheStart()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, announce);
    QFETCH(QList<bool>, enforced);
    if (!file.isEmpty())
        Files::write(SwitchFile, file);
    SwitchPlugin plugin;
    plugin.setSwitch(Radio, {20}, true);
    plugin.setEntry(Radio, QStringLiteral("announce"), announce);
    Simulator::ServiceThread thread;
    auto *audio = thread.create<Simulator::AudioPolicy>();
    QVERIFY(thread.run([audio] { return audio->appear(); }));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    const auto calls = thread.run([audio] { return audio->calls(); });
    QList<bool> seen;
    for (const Simulator::Call &call : calls)
        seen.append(call.arguments.contains(QStringLiteral("enabled")));
    QCOMPARE(seen, enforced);
    QCOMPARE(Files::values(PolicyFile).value(QStringLiteral("MicrophoneEnabled")),
             QStringLiteral("true"));
}

void TestSwitchStart::failingSwitchForcesItsPoliciesOff()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, 3);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    // Once as the default is stored, once in the pass over all policies.
    const QStringList failure =
        texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: \"cellular\"",
               "warning|default|Return code: 3"});
    QCOMPARE(daemon.complaints(), failure + failure);
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(Files::values(PolicyFile).value(QStringLiteral("CameraEnabled")),
             QStringLiteral("true"));
}

/// The event loop starts after the daemon has its name.
void TestSwitchStart::announcementLaterComesToTheBus()
{
    Files::write(SwitchFile, "[policy]\ncellular=true\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, false);
    plugin.setEntry(Cellular, QStringLiteral("announce"), QStringLiteral("later"));
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.monitor().waitFor([](const BusMessage &message) {
        return message.isSignal(QStringLiteral("SwitchChanged"));
    }));
    QCOMPARE(daemon.messages().filter(QStringLiteral("Changed ")),
             texts({"PolicyChanged CameraEnabled true", "SwitchChanged cellular true"}));
}

QTEST_GUILESS_MAIN(TestSwitchStart)
#include "tst_switchstart.moc"
