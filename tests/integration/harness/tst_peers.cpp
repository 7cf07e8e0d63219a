// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/brokenplugin.h"
#include "support/bus.h"
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"
#include "support/waiting.h"

#include <QDBusConnectionInterface>
#include <QtTest>

#include <sys/stat.h>

using namespace Support;

namespace {

const QString Camera = QStringLiteral("CameraEnabled");

} // namespace

/// The tools that play the daemon's callers and plugins: that each does what a test asks of it.
class TestPeers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void callersAreKnownByTheirIdentity_data();
    void callersAreKnownByTheirIdentity();
    void callersKeepTheTypesOfArguments_data();
    void callersKeepTheTypesOfArguments();
    void callersCanVanishBeforeTheyAreHeard();
    void switchPluginObeys();
    void switchPluginCanHoldACall();
    void lockPluginsObey();
    void brokenPluginsAreInstalled();
};

void TestPeers::init()
{
    Files::reset();
}

void TestPeers::callersAreKnownByTheirIdentity_data()
{
    QTest::addColumn<Identity>("identity");
    QTest::addColumn<int>("user");
    QTest::addColumn<int>("group");

    QTest::newRow("root") << Identity::root() << 0 << 0;
    QTest::newRow("mdm") << Identity::of("mdm") << 7001 << 7001;
    QTest::newRow("operator") << Identity::of("operator") << 7003 << 7011;
    QTest::newRow("pretender") << Identity::of("pretender") << 7005 << 7012;
    QTest::newRow("guest") << Identity::of("guest") << 7006 << 7006;
    QTest::newRow("guest in privileged")
        << Identity::of("guest").inGroup("privileged") << 7006 << 7011;
    QTest::newRow("effective guest") << Identity::of("guest").asEffective() << 7006 << 7006;
}

void TestPeers::callersAreKnownByTheirIdentity()
{
    QFETCH(const Identity, identity);
    QFETCH(const int, user);
    QFETCH(const int, group);

    Daemon daemon;
    QVERIFY(daemon.start());
    daemon.pause();
    Caller caller(identity);
    caller.send(QStringLiteral("Policy"), QStringLiteral("KeyValue"), {Camera});

    // As another connection sees the caller, and as its process looks while it waits.
    Bus bus;
    QCOMPARE(bus.ownerProcess(caller.busName()), caller.processId());
    const QDBusConnection connection = bus.connect();
    QCOMPARE(int(connection.interface()->serviceUid(caller.busName())), user);
    struct stat process = {};
    QCOMPARE(stat(qPrintable(QStringLiteral("/proc/%1").arg(caller.processId())), &process), 0);
    QCOMPARE(int(process.st_uid), user);
    QCOMPARE(int(process.st_gid), group);

    daemon.resume();
    QCOMPARE(caller.reply().value(), QVariant(true));
}

void TestPeers::callersKeepTheTypesOfArguments_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("signature");

    QTest::newRow("bool") << QVariant(true) << QStringLiteral("b");
    QTest::newRow("int") << QVariant(1) << QStringLiteral("i");
    QTest::newRow("unsigned") << QVariant(1U) << QStringLiteral("u");
    QTest::newRow("text") << QVariant(QStringLiteral("x")) << QStringLiteral("s");
    QTest::newRow("list") << QVariant(QStringList{QStringLiteral("x")}) << QStringLiteral("as");
    QTest::newRow("map") << QVariant(QVariantMap{{QStringLiteral("x"), 1}})
                         << QStringLiteral("a{sv}");
}

void TestPeers::callersKeepTheTypesOfArguments()
{
    QFETCH(const QVariant, value);
    QFETCH(const QString, signature);

    LineFile log(QStringLiteral("/tmp/types"));
    QProcess monitor;
    monitor.setStandardOutputFile(log.path());
    monitor.start(QStringLiteral("busctl"),
                  {QStringLiteral("--json=short"), QStringLiteral("monitor")});

    // That the monitor has begun is seen by what it shows: calls are made until one is shown.
    const QString argument = QStringLiteral("\"CameraEnabled\",{\"type\":\"");
    QVERIFY(waitFor([&] {
        return Caller().setPolicy(Camera, value).errorName
            == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown")
            && log.contains(argument);
    }));
    QVERIFY(log.contains(argument + signature + QLatin1Char('"')));
    monitor.kill();
    QVERIFY(monitor.waitForFinished());
}

void TestPeers::callersCanVanishBeforeTheyAreHeard()
{
    Daemon daemon;
    BusMonitor monitor;
    QVERIFY(daemon.start());
    monitor.clear();

    daemon.pause();
    Caller caller;
    caller.send(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {Camera, QVariant::fromValue(QDBusVariant(false))});
    caller.vanish();
    QVERIFY(!QFile::exists(QStringLiteral("/proc/%1").arg(caller.processId())));
    daemon.resume();
    monitor.settle();

    const QVector<BusMessage> questions =
        monitor.calls(QStringLiteral("GetConnectionUnixProcessID"));
    QVERIFY(std::any_of(questions.begin(), questions.end(), [&](const BusMessage &question) {
        return question.arguments.value(0) == caller.busName();
    }));
    QVERIFY(!caller.reply().arrived);
}

void TestPeers::switchPluginObeys()
{
    const QString radio = QStringLiteral("Radio");
    SwitchPlugin plugin;
    plugin.setSwitch(radio, {4, 3}, true);
    Daemon daemon;
    BusMonitor monitor;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().switchValue(radio).value(), QVariant(true));
    plugin.setSwitch(radio, {4, 3}, 17);
    QCOMPARE(Caller().switchValue(radio).value(), QVariant(false));
    QVERIFY(daemon.waitForLog(QStringLiteral("Return code: 17")));

    const int before = plugin.mark();
    QCOMPARE(Caller().setSwitch(radio, false).value(), QVariant(true));
    QVERIFY(plugin.calls(before).contains(QStringLiteral("setKeyValue Radio false")));
    QCOMPARE(plugin.value(radio), QJsonValue(false));

    plugin.setEntry(radio, QStringLiteral("result"), 5);
    QCOMPARE(Caller().setSwitch(radio, true).value(), QVariant(false));
    QCOMPARE(plugin.value(radio), QJsonValue(false));

    monitor.clear();
    plugin.announce(radio, true);
    monitor.settle();
    QCOMPARE(monitor.announcements(QStringLiteral("SwitchChanged")).size(), 1);
}

void TestPeers::switchPluginCanHoldACall()
{
    const QString radio = QStringLiteral("Radio");
    SwitchPlugin plugin;
    plugin.setSwitch(radio, {}, true);
    Daemon daemon;
    QVERIFY(daemon.start());

    plugin.hold(QStringLiteral("keyValue"));
    Caller caller;
    caller.send(QStringLiteral("Switch"), QStringLiteral("KeyValue"), {radio});
    QVERIFY(plugin.waitForCall(QStringLiteral("holding keyValue")));
    plugin.release();
    QCOMPARE(caller.reply().value(), QVariant(true));
}

void TestPeers::lockPluginsObey()
{
    const QString wlan = QStringLiteral("WlanEnabled");
    LockPlugin first(QStringLiteral("first.so"), QStringLiteral("first"), {Camera});
    LockPlugin second(QStringLiteral("second.so"), QStringLiteral("second"), {wlan});
    Daemon daemon;
    BusMonitor monitor;
    QVERIFY(daemon.start());

    // Two copies of one library keep their affairs apart.
    first.setLocked({Camera, wlan});
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QCOMPARE(Caller().policy(wlan).value(), QVariant(true));
    second.setLocked({wlan});
    QCOMPARE(Caller().policy(wlan).value(), QVariant(false));
    QVERIFY(first.calls().contains(QStringLiteral("supportedPolicies")));
    QVERIFY(!first.calls().contains(QStringLiteral("policyIsLocked WlanEnabled")));

    monitor.clear();
    first.announce(Camera, true);
    second.announceFromThread(wlan, true);
    monitor.settle();
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 2);
}

void TestPeers::brokenPluginsAreInstalled()
{
    const BrokenPlugin text(BrokenPlugin::NoLibrary, SwitchPlugin::location());
    const BrokenPlugin noRoot(BrokenPlugin::NoRoot,
                              LockPlugin::directory() + QStringLiteral("noroot.so"));
    const BrokenPlugin other(BrokenPlugin::OtherInterface,
                             LockPlugin::directory() + QStringLiteral("other.so"));
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.waitForLog(QStringLiteral("Failed to load plugin")));
    QVERIFY(daemon.waitForLog(QStringLiteral("noroot.so")));
    QVERIFY(daemon.log().filter(QStringLiteral("other.so")).isEmpty());
}

QTEST_GUILESS_MAIN(TestPeers)
#include "tst_peers.moc"
