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

#include <syslog.h>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");

} // namespace

/// Setting an access switch: the plugin decides, then the change is saved and recorded.
class TestSwitchWriting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void otherValue();
    void sameValue();
    void refusalOfThePlugin_data();
    void refusalOfThePlugin();
    void unreadableOldValueIsRecordedAsFalse();
    void unreadableAndRefused();
    void announcementInsideGoesBeforeTheFile();
    void announcementLaterIsEnforcedLater();
    void withoutAnnouncementNothingIsEnforced();
    void locksOfPoliciesDoNotCount();
};

void TestSwitchWriting::init()
{
    Files::reset();
}

void TestSwitchWriting::otherValue()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1, 2}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();
    const FileSnapshot policies = Files::snapshot(PolicyFile);

    Caller caller;
    const Reply reply = caller.setSwitch(Cellular, false);
    QCOMPARE(reply.signature, QStringLiteral("b"));
    QCOMPARE(reply.value(), QVariant(true));

    const QString event =
        QStringLiteral("Policy cellular changed. Old value true. New value false.");
    QCOMPARE(plugin.calls(before),
             texts({"keyValue cellular", "setKeyValue cellular false", "keyPolicyTypes"}));
    QCOMPARE(daemon.messages(caller.busName()).filter(QStringLiteral("ed ")),
             texts({"PolicyChanged CameraEnabled false", "PolicyChanged LocationEnabled false",
                    "SwitchChanged cellular false"})
                 + QStringList(eventCall("cellular changed. Old value true. New value false.")));
    QCOMPARE(daemon.recorded(), QStringList(event));
    const SystemLogLine line = daemon.systemLog().lines().constLast();
    QCOMPARE(line.priority, LOG_USER | LOG_INFO);
    QCOMPARE(line.program, QStringLiteral("govd"));
    QCOMPARE(Files::read(SwitchFile), QByteArray("[policy]\ncellular=false\n"));
    QCOMPARE(Files::snapshot(PolicyFile), policies);
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestSwitchWriting::sameValue()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    plugin.setEntry(Cellular, QStringLiteral("announce"), QStringLiteral("never"));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setSwitch(Cellular, true).value(), QVariant(true));
    const FileSnapshot file = Files::snapshot(SwitchFile);
    daemon.forget();
    const int before = plugin.mark();

    QCOMPARE(Caller().setSwitch(Cellular, true).value(), QVariant(true));
    QCOMPARE(plugin.calls(before), texts({"keyValue cellular", "setKeyValue cellular true"}));
    QCOMPARE(daemon.recorded(),
             texts({"Policy cellular changed. Old value true. New value true."}));
    QVERIFY(Files::snapshot(SwitchFile) != file); // written anew
    QCOMPARE(Files::snapshot(SwitchFile).content, file.content);
}

void TestSwitchWriting::refusalOfThePlugin_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("code");
    QTest::newRow("3") << Cellular << 3 << QStringLiteral("3");
    QTest::newRow("1") << Cellular << 1 << QStringLiteral("1");
    QTest::newRow("-22") << Cellular << -22 << QStringLiteral("-22");
    QTest::newRow("unknown switch") << QStringLiteral("no \"such\"") << 0 << QStringLiteral("-1");
}

void TestSwitchWriting::refusalOfThePlugin()
{
    QFETCH(QString, key);
    QFETCH(int, result);
    QFETCH(QString, code);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    plugin.setState({{QStringLiteral("switches"), plugin.state().value(QLatin1String("switches"))},
                     {QStringLiteral("unknown"), -1}});
    plugin.setEntry(Cellular, QStringLiteral("result"), result);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int logMark = daemon.process().mark();

    Caller caller;
    const Reply reply = caller.setSwitch(key, false);
    QVERIFY(!reply.isError());
    QCOMPARE(reply.value(), QVariant(false));
    QString quoted;
    QDebug(&quoted).nospace() << key;
    const QStringList log = daemon.process().log(logMark);
    QCOMPARE(log.mid(log.size() - 2),
             (QStringList{QLatin1String("warning|default|AccessSwitch plugin failed to set value "
                                        "for key: ")
                              + quoted,
                          QLatin1String("warning|default|Return code: ") + code}));
    QCOMPARE(log.size(), key == Cellular ? 2 : 4); // an unknown one cannot be read, either
    QCOMPARE(daemon.messages(caller.busName()),
             QStringList(ProcessQuery) + texts({"return false"}));
    QCOMPARE(daemon.recorded(), QStringList());
    QVERIFY(!QFile::exists(SwitchFile));
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(plugin.value(Cellular), QJsonValue(true));
}

void TestSwitchWriting::unreadableOldValueIsRecordedAsFalse()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, 5);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().setSwitch(Cellular, true).value(), QVariant(true));
    QCOMPARE(daemon.logged(),
             texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: "
                    "\"cellular\"",
                    "warning|default|Return code: 5"}));
    QCOMPARE(daemon.recorded(),
             texts({"Policy cellular changed. Old value false. New value true."}));
}

void TestSwitchWriting::unreadableAndRefused()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, 5);
    plugin.setEntry(Cellular, QStringLiteral("result"), 6);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().setSwitch(Cellular, true).value(), QVariant(false));
    QCOMPARE(daemon.logged(),
             texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: "
                    "\"cellular\"",
                    "warning|default|Return code: 5",
                    "warning|default|AccessSwitch plugin failed to set value for key: \"cellular\"",
                    "warning|default|Return code: 6"}));
}

/// Holds the daemon where the announcement arrives: the plugin has the value, the file not yet.
void TestSwitchWriting::announcementInsideGoesBeforeTheFile()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();
    plugin.hold(QStringLiteral("keyPolicyTypes"));
    Caller caller;
    caller.send(QStringLiteral("Switch"), QStringLiteral("SetKeyValue"),
                {Cellular, QVariant::fromValue(QDBusVariant(false))});
    QVERIFY(plugin.waitForCall(QStringLiteral("holding"), before));

    QCOMPARE(plugin.value(Cellular), QJsonValue(false));
    QVERIFY(!QFile::exists(SwitchFile));
    daemon.systemLog().settle();
    QCOMPARE(daemon.systemLog().mark(), 0);

    plugin.release();
    QCOMPARE(caller.reply().value(), QVariant(true));
    QCOMPARE(Files::values(SwitchFile).value(Cellular), QStringLiteral("false"));
    QCOMPARE(daemon.recorded().size(), 1);
}

void TestSwitchWriting::announcementLaterIsEnforcedLater()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    plugin.setEntry(Cellular, QStringLiteral("announce"), QStringLiteral("later"));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    Caller caller;
    QCOMPARE(caller.setSwitch(Cellular, false).value(), QVariant(true));
    QVERIFY(daemon.monitor().waitFor([](const BusMessage &message) {
        return message.isSignal(QStringLiteral("SwitchChanged"));
    }));
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(daemon.messages(caller.busName()).mid(2),
             texts({"return true", "PolicyChanged CameraEnabled false",
                    "SwitchChanged cellular false"}));
}

void TestSwitchWriting::withoutAnnouncementNothingIsEnforced()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    plugin.setEntry(Cellular, QStringLiteral("announce"), QStringLiteral("never"));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    Caller caller;
    QCOMPARE(caller.setSwitch(Cellular, false).value(), QVariant(true));
    QCOMPARE(daemon.messages(caller.busName()).mid(2), texts({"return true"}));
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(Caller().policy(QStringLiteral("CameraEnabled")).value(), QVariant(false));
    QCOMPARE(Files::values(SwitchFile).value(Cellular), QStringLiteral("false"));
}

void TestSwitchWriting::locksOfPoliciesDoNotCount()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    LockPlugin locks(QStringLiteral("lock.so"), QStringLiteral("lock"), {Cellular});
    locks.setLocked({Cellular});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = locks.mark();

    QCOMPARE(Caller().setSwitch(Cellular, false).value(), QVariant(true));
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
    QCOMPARE(locks.calls(before), QStringList());
}

QTEST_GUILESS_MAIN(TestSwitchWriting)
#include "tst_switchwriting.moc"
