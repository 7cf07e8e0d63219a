// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include "simulator/devicesentry.h"

#include <QtTest>

using namespace Support;

namespace {

const QString First = QStringLiteral("first");
const QString Second = QStringLiteral("second");
constexpr int UsbDevicesType = 45;

/// The call by which the policy of USB devices is enforced.
QString enforcement(bool value)
{
    return QLatin1String(R"(call Set "org.brinos.DeviceSentry1.UsbManager" "Enabled" )")
        + (value ? Yes : No);
}

} // namespace

/// What access switches do to the write of a policy.
class TestPolicySwitches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void switchThatIsOffForcesTheNewValueToFalse();
    void switchThatIsOnLeavesTheNewValueAlone();
    void switchThatGovernsOthersDoesNotCount();
    void failingSwitchCountsAsOff();
    void switchIsNotAskedAboutAValueThatIsFalse();
    void onlyTheFirstGoverningSwitchCounts_data();
    void onlyTheFirstGoverningSwitchCounts();
    void oneSwitchMayNameAPolicyTwice();
    void switchesOfNoPolicyGovernUnknownKeys();
    void eventTellsTheOldValueAsAReaderSeesIt();

private:
    QScopedPointer<Simulator::DeviceSentry> m_sentry;
};

void TestPolicySwitches::init()
{
    Files::reset();
    Files::write(PolicyFile, "[policy]\nUsbDevicesEnabled=false\n");
    m_sentry.reset(new Simulator::DeviceSentry);
    QVERIFY(m_sentry->appear());
}

void TestPolicySwitches::cleanup()
{
    m_sentry.reset();
}

void TestPolicySwitches::switchThatIsOffForcesTheNewValueToFalse()
{
    SwitchPlugin plugin;
    plugin.setSwitch(First, {1, UsbDevicesType}, false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));

    QCOMPARE(daemon.said(),
             QStringList({daemon.event(UsbDevices, No, Yes), enforcement(false),
                          daemon.announcement(UsbDevices, false), ReplyTrue}));
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(daemon.policy(UsbDevices), QVariant(false));
    QCOMPARE(Files::values(PolicyFile).value(UsbDevices), Yes);
    plugin.setEntry(First, QStringLiteral("value"), true);
    QCOMPARE(daemon.policy(UsbDevices), QVariant(true)); // what was stored
}

void TestPolicySwitches::switchThatIsOnLeavesTheNewValueAlone()
{
    SwitchPlugin plugin;
    plugin.setSwitch(First, {UsbDevicesType}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    for (const bool value : {true, false})
        QCOMPARE(daemon.set(UsbDevices, value), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(UsbDevices, No, Yes), enforcement(true),
                          daemon.announcement(UsbDevices, true), ReplyTrue,
                          daemon.event(UsbDevices, Yes, No), enforcement(false),
                          daemon.announcement(UsbDevices, false), ReplyTrue}));
}

void TestPolicySwitches::switchThatGovernsOthersDoesNotCount()
{
    SwitchPlugin plugin;
    plugin.setSwitch(First, {1, 44, 4}, false);
    plugin.setSwitch(Second, {}, false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int mark = plugin.mark();
    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(UsbDevices, No, Yes), enforcement(true),
                          daemon.announcement(UsbDevices, true), ReplyTrue}));
    QCOMPARE(plugin.calls(mark).filter(QStringLiteral("keyValue")), QStringList());
}

void TestPolicySwitches::failingSwitchCountsAsOff()
{
    SwitchPlugin plugin;
    plugin.setSwitch(First, {UsbDevicesType}, 7);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(UsbDevices, No, Yes), enforcement(false),
                          daemon.announcement(UsbDevices, false), ReplyTrue}));
    // Once for the event's old value, once for the new one.
    const QStringList failure{
        QStringLiteral(
            R"(warning|default|AccessSwitch plugin failed to retrieve value for key: "first")"),
        QStringLiteral("warning|default|Return code: 7")};
    QCOMPARE(daemon.logged(), failure + failure);
}

void TestPolicySwitches::switchIsNotAskedAboutAValueThatIsFalse()
{
    SwitchPlugin plugin;
    plugin.setSwitch(First, {UsbDevicesType}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));
    const int mark = plugin.mark();
    QCOMPARE(daemon.set(UsbDevices, false), QVariant(true));
    // The event's old value, then the look for a switch that governs the policy.
    QCOMPARE(plugin.calls(mark),
             QStringList({QStringLiteral("keyPolicyTypes"), QStringLiteral("keyValue first"),
                          QStringLiteral("keyPolicyTypes")}));
}

void TestPolicySwitches::onlyTheFirstGoverningSwitchCounts_data()
{
    QTest::addColumn<bool>("first");
    QTest::addColumn<bool>("second");
    QTest::newRow("both on") << true << true;
    QTest::newRow("first on") << true << false;
    QTest::newRow("second on") << false << true;
    QTest::newRow("both off") << false << false;
}

void TestPolicySwitches::onlyTheFirstGoverningSwitchCounts()
{
    QFETCH(bool, first);
    QFETCH(bool, second);
    SwitchPlugin plugin;
    plugin.setSwitch(First, {UsbDevicesType}, true);
    plugin.setSwitch(Second, {UsbDevicesType}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    // Which one is the first differs from start to start.
    const QStringList keys =
        Caller().call(QStringLiteral("Switch"), QStringLiteral("Keys"), {}).value().toStringList();
    QCOMPARE(keys.size(), 2);
    plugin.setEntry(keys.first(), QStringLiteral("value"), first);
    plugin.setEntry(keys.last(), QStringLiteral("value"), second);
    daemon.forget();

    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));

    QCOMPARE(daemon.said(),
             QStringList({daemon.event(UsbDevices, No, Yes), enforcement(first),
                          daemon.announcement(UsbDevices, first), ReplyTrue}));
    QCOMPARE(daemon.policy(UsbDevices), QVariant(first && second)); // a reader sees both
}

void TestPolicySwitches::oneSwitchMayNameAPolicyTwice()
{
    SwitchPlugin plugin;
    plugin.setSwitch(First, {UsbDevicesType, UsbDevicesType}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(UsbDevices, No, Yes), enforcement(true),
                          daemon.announcement(UsbDevices, true), ReplyTrue}));
}

void TestPolicySwitches::switchesOfNoPolicyGovernUnknownKeys()
{
    const QString key = QStringLiteral("com.example.Wish");
    SwitchPlugin plugin;
    plugin.setSwitch(First, {0}, false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(key, true), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(key, No, Yes), daemon.announcement(key, false), ReplyTrue}));
    QCOMPARE(Files::values(PolicyFile).value(key), Yes);
}

void TestPolicySwitches::eventTellsTheOldValueAsAReaderSeesIt()
{
    SwitchPlugin plugin;
    plugin.setSwitch(First, {UsbDevicesType}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true));
    plugin.setEntry(First, QStringLiteral("value"), false);
    daemon.forget();

    QCOMPARE(daemon.set(UsbDevices, true), QVariant(true)); // the value that it has

    QCOMPARE(daemon.said(), QStringList({daemon.event(UsbDevices, No, Yes), ReplyTrue}));
    QCOMPARE(daemon.recorded(), QStringList(daemon.eventText(UsbDevices, No, Yes)));
}

QTEST_GUILESS_MAIN(TestPolicySwitches)
#include "tst_policyswitches.moc"
