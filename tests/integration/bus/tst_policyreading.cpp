// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"
#include "support/systemlog.h"
#include "support/texts.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Lens = QStringLiteral("lens");
const QString Shutter = QStringLiteral("shutter");

/// The switches that the plugin was asked for, in order, since the first @p since calls.
QStringList asked(const SwitchPlugin &plugin, int since)
{
    return plugin.calls(since).filter(QRegularExpression(QStringLiteral("^keyValue ")));
}

} // namespace

/// The value of a policy as a reader sees it: switches first, then locks, then what is stored.
class TestPolicyReading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void switchThatIsOffHidesTheStoredValue();
    void everyGoverningSwitchCounts_data();
    void everyGoverningSwitchCounts();
    void switchesAreAskedInTheOrderOfTheirTable();
    void firstSwitchThatIsOffEndsTheSearch();
    void switchThatNamesAPolicyTwiceIsAskedOnce();
    void otherSwitchesAreNotAsked();
    void switchThatFailsCountsAsOff();
    void keyOfNoPolicyIsGovernedByTheSwitchOfNone();
    void switchesGoBeforeLocks();
    void locksGoBeforeTheStore();
    void readingChangesNothing();
    void keysAreComparedExactly();
    void everybodyMayRead();
};

void TestPolicyReading::init()
{
    Files::reset();
}

void TestPolicyReading::switchThatIsOffHidesTheStoredValue()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("true"));
    // It is hidden, not gone.
    plugin.setSwitch(Lens, {1}, true);
    QCOMPARE(client.policy(Camera), QVariant(true));
}

void TestPolicyReading::everyGoverningSwitchCounts_data()
{
    QTest::addColumn<bool>("lens");
    QTest::addColumn<bool>("shutter");
    QTest::newRow("both on") << true << true;
    QTest::newRow("one off") << false << true;
    QTest::newRow("the other off") << true << false;
    QTest::newRow("both off") << false << false;
}

void TestPolicyReading::everyGoverningSwitchCounts()
{
    QFETCH(const bool, lens);
    QFETCH(const bool, shutter);
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1, 2}, lens);
    plugin.setSwitch(Shutter, {3, 1}, shutter);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(lens && shutter));
    QCOMPARE(client.policy(QStringLiteral("LocationEnabled")), QVariant(lens));
    QCOMPARE(client.policy(QStringLiteral("BluetoothEnabled")), QVariant(shutter));
    QCOMPARE(client.policy(QStringLiteral("WlanEnabled")), QVariant(true));
}

void TestPolicyReading::switchesAreAskedInTheOrderOfTheirTable()
{
    SwitchPlugin plugin;
    const QStringList switches = texts({"a", "b", "c", "d", "e", "f"});
    for (const QString &key : switches)
        plugin.setSwitch(key, {1}, true);
    Daemon daemon;
    daemon.setEnvironment(QStringLiteral("QT_HASH_SEED"), QStringLiteral("0"));
    QVERIFY(daemon.start());
    Client client;
    QStringList expected;
    const QStringList order = client.switches();
    for (const QString &key : order)
        expected.append(QLatin1String("keyValue ") + key);
    QCOMPARE(expected.size(), 6);

    const int mark = plugin.mark();
    QCOMPARE(client.policy(Camera), QVariant(true));
    QCOMPARE(asked(plugin, mark), expected);
}

void TestPolicyReading::firstSwitchThatIsOffEndsTheSearch()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    plugin.setSwitch(Shutter, {1}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    const int mark = plugin.mark();
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(asked(plugin, mark).size(), 1);
}

void TestPolicyReading::switchThatNamesAPolicyTwiceIsAskedOnce()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1, 1, 2, 1}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = plugin.mark();
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QCOMPARE(plugin.calls(mark), texts({"keyPolicyTypes", "keyValue lens"}));
}

void TestPolicyReading::otherSwitchesAreNotAsked()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {2, 3, 45, -1, 100}, false);
    plugin.setSwitch(Shutter, {}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = plugin.mark();
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QCOMPARE(asked(plugin, mark), QStringList());
}

void TestPolicyReading::switchThatFailsCountsAsOff()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, 1);
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = daemon.mark();
    QCOMPARE(Client().policy(Camera), QVariant(false));
    QCOMPARE(daemon.log(mark),
             texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: "
                    "\"lens\"",
                    "warning|default|Return code: 1"}));
}

void TestPolicyReading::keyOfNoPolicyIsGovernedByTheSwitchOfNone()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {0}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(QStringLiteral("TelepathyEnabled")), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("NoPolicy")), QVariant(false));
    QCOMPARE(client.policy(Camera), QVariant(true));
    plugin.setSwitch(Lens, {0}, true);
    QCOMPARE(client.policy(QStringLiteral("NoPolicy")), QVariant(true));
    QVERIFY(client.haveNoValue(texts({"TelepathyEnabled"})));
}

void TestPolicyReading::switchesGoBeforeLocks()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    const QStringList question = texts({"policyIsLocked CameraEnabled"});
    int mark = lock.mark();
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(lock.calls(mark), QStringList());

    plugin.setSwitch(Lens, {1}, true);
    mark = lock.mark();
    QCOMPARE(client.policy(Camera), QVariant(true));
    QCOMPARE(lock.calls(mark), question);
}

void TestPolicyReading::locksGoBeforeTheStore()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, true);
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(true));
    lock.setLocked({Camera});
    QCOMPARE(client.policy(Camera), QVariant(false));
    lock.setLocked({});
    QCOMPARE(client.policy(Camera), QVariant(true));
}

void TestPolicyReading::readingChangesNothing()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    SystemLog systemLog;
    BusMonitor monitor;
    const FileSnapshot file = Files::snapshot(PolicyFile);
    const int mark = plugin.mark();
    const int logMark = daemon.mark();
    QCOMPARE(Client().policy(Camera), QVariant(false));
    QVERIFY(Client().haveNoValue(texts({"TelepathyEnabled"})));

    monitor.settle();
    systemLog.settle();
    QVERIFY(Files::snapshot(PolicyFile) == file);
    QVERIFY(!QFile::exists(SwitchFile));
    QCOMPARE(plugin.calls(mark).filter(QStringLiteral("setKeyValue")), QStringList());
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 0);
    QCOMPARE(systemLog.lines().size(), 0);
    QCOMPARE(daemon.log(logMark), QStringList()); // anybody could fill it
}

void TestPolicyReading::keysAreComparedExactly()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Client().haveNoValue(texts({"cameraEnabled", "CAMERAENABLED", "CameraEnabled ",
                                        " CameraEnabled", "CameraEnable", "Camera", "1", ""})));

    // A key in other letters is that of no policy: it is stored, and nothing is done about it.
    Client client;
    QVERIFY(client.setPolicy(QStringLiteral("cameraEnabled"), false));
    QCOMPARE(client.policy(QStringLiteral("cameraEnabled")), QVariant(false));
    QCOMPARE(client.policy(Camera), QVariant(true));
    QVERIFY(QFile::exists(CameraMarker));
}

void TestPolicyReading::everybodyMayRead()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;
    const Reply reply = Caller(Identity::of("guest")).policy(Camera);
    QVERIFY(!reply.isError());
    QCOMPARE(reply.value(), QVariant(true));
    monitor.settle();
    const QString own = monitor
                            .messages([](const BusMessage &message) {
                                return message.type == BusMessage::Return
                                    && message.signature == QLatin1String("v");
                            })
                            .value(0)
                            .sender;
    QCOMPARE(monitor.calls(QStringLiteral("GetConnectionUnixProcessID"), own).size(), 0);
}

QTEST_GUILESS_MAIN(TestPolicyReading)
#include "tst_policyreading.moc"
