// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/mount.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QtTest>

using namespace Support;

namespace {

const QString Location = QStringLiteral("LocationEnabled");
const QString Cellular = QStringLiteral("cellular");
const QString Inside = QStringLiteral("inside");
const QString Later = QStringLiteral("later");

/// Policies that nothing but the store knows, and numbers that are no policies.
const QList<int> Three = {2, 999, 4};

bool isSwitchChange(const BusMessage &message)
{
    return message.isSignal(QStringLiteral("SwitchChanged"));
}

/// A "?" in a list of messages stands for one check of the caller.
QStringList withChecks(const QStringList &messages, const QStringList &check)
{
    QStringList result;
    for (const QString &message : messages) {
        if (message == QLatin1String("?"))
            result.append(check);
        else
            result.append(message);
    }
    return result;
}

} // namespace

/// How often the daemon asks the bus who its caller is, and when.
class TestCallerChecks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void policyWrites_data();
    void policyWrites();
    void lockedPolicyIsCheckedOnce();
    void policyThatCannotBeSavedIsCheckedOnce();
    void switchWrites_data();
    void switchWrites();
    void switchWithoutPluginIsCheckedOnce();
    void switchThatCannotBeSavedIsCheckedForEachPolicy();
    void repeatedWritesAreCheckedAfresh();
    void ownWorkIsNotChecked();
    void announcementsOfPluginsAreNotChecked();
};

void TestCallerChecks::init()
{
    Files::reset();
}

void TestCallerChecks::policyWrites_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("value");
    QTest::addColumn<QStringList>("messages");

    QTest::newRow("other value") << Location << false
                                 << QStringList{
                                        QStringLiteral("?"),
                                        eventCall("LocationEnabled changed. Old value true. "
                                                  "New value false."),
                                        QStringLiteral("?"),
                                        QStringLiteral("PolicyChanged %1 false").arg(Location),
                                        QStringLiteral("return true")};
    QTest::newRow("same value") << Location << true
                                << QStringList{QStringLiteral("?"),
                                               eventCall("LocationEnabled changed. Old value true. "
                                                         "New value true."),
                                               QStringLiteral("return true")};
    QTest::newRow("no policy type")
        << QStringLiteral("Other") << true
        << QStringList{QStringLiteral("?"),
                       eventCall("Other changed. Old value . "
                                 "New value true."),
                       QStringLiteral("?"), QStringLiteral("PolicyChanged Other true"),
                       QStringLiteral("return true")};
}

void TestCallerChecks::policyWrites()
{
    QFETCH(QString, key);
    QFETCH(bool, value);
    QFETCH(QStringList, messages);
    const QStringList process(ProcessQuery);
    const QStringList user(UserQuery);

    const QVector<QPair<Identity, QStringList>> rows = {
        {Identity::root(), process},
        {Identity::of("operator"), process},
        {Identity::of("mdm"), process + user},
    };
    for (const auto &row : rows) {
        Files::reset();
        WatchedDaemon daemon;
        QVERIFY(daemon.start());
        Caller caller(row.first);
        QCOMPARE(caller.setPolicy(key, value).value(), QVariant(true));
        QCOMPARE(daemon.messages(caller.busName()), withChecks(messages, row.second));
    }
}

void TestCallerChecks::lockedPolicyIsCheckedOnce()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Location});
    plugin.setLocked({Location});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    Caller caller;
    QCOMPARE(caller.setPolicy(Location, true).value(), QVariant(false));
    QCOMPARE(daemon.messages(caller.busName()),
             QStringList(ProcessQuery) + texts({"return false"}));
}

void TestCallerChecks::policyThatCannotBeSavedIsCheckedOnce()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const Mount disk = Mount::readOnly(QStringLiteral("/etc/policy"));

    Caller caller;
    QCOMPARE(caller.setPolicy(Location, false).value(), QVariant(false));
    QCOMPARE(daemon.messages(caller.busName()),
             QStringList(ProcessQuery) + texts({"return false"}));
}

void TestCallerChecks::switchWrites_data()
{
    QTest::addColumn<QList<int>>("types");
    QTest::addColumn<QString>("announce");
    QTest::addColumn<int>("result");
    QTest::addColumn<QStringList>("messages");

    const QString event = eventCall("cellular changed. Old value true. New value false.");
    const QStringList plain = {QStringLiteral("?"), event, QStringLiteral("return true")};
    QTest::newRow("announced, governs nothing")
        << QList<int>() << Inside << 0
        << texts({"?", "SwitchChanged cellular false"}) + plain.mid(1);
    QTest::newRow("announced, governs one")
        << QList<int>{2} << Inside << 0
        << texts({"?", "?", "PolicyChanged LocationEnabled false", "SwitchChanged cellular false"})
            + plain.mid(1);
    QTest::newRow("announced, governs three")
        << Three << Inside << 0
        << texts({"?", "?", "PolicyChanged LocationEnabled false", "?", "PolicyChanged  false", "?",
                  "PolicyChanged WlanEnabled false", "SwitchChanged cellular false"})
            + plain.mid(1);
    QTest::newRow("announced later") << Three << Later << 0
                                     << plain
            + texts({"PolicyChanged LocationEnabled false", "PolicyChanged  false",
                     "PolicyChanged WlanEnabled false", "SwitchChanged cellular false"});
    QTest::newRow("never announced") << Three << QStringLiteral("never") << 0 << plain;
    QTest::newRow("refused by the plugin") << Three << Inside << 3 << texts({"?", "return false"});
}

void TestCallerChecks::switchWrites()
{
    QFETCH(QList<int>, types);
    QFETCH(QString, announce);
    QFETCH(int, result);
    QFETCH(QStringList, messages);
    const QStringList process(ProcessQuery);
    const QStringList user(UserQuery);

    const QVector<QPair<Identity, QStringList>> rows = {
        {Identity::root(), process},
        {Identity::of("agent"), process + user},
    };
    for (const auto &row : rows) {
        Files::reset();
        SwitchPlugin plugin;
        plugin.setSwitch(Cellular, types, true);
        plugin.setEntry(Cellular, QStringLiteral("announce"), announce);
        plugin.setEntry(Cellular, QStringLiteral("result"), result);
        WatchedDaemon daemon;
        QVERIFY(daemon.start());
        Caller caller(row.first);
        QCOMPARE(caller.setSwitch(Cellular, false).value(), QVariant(result == 0));
        if (announce == Later)
            QVERIFY(daemon.monitor().waitFor(isSwitchChange));
        QCOMPARE(daemon.messages(caller.busName()), withChecks(messages, row.second));
    }
}

void TestCallerChecks::switchWithoutPluginIsCheckedOnce()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    Caller caller(Identity::of("mdm"));
    QCOMPARE(caller.setSwitch(Cellular, true).value(), QVariant(false));
    QCOMPARE(daemon.messages(caller.busName()), BothQueries + texts({"return false"}));
}

void TestCallerChecks::switchThatCannotBeSavedIsCheckedForEachPolicy()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {2, 4}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const Mount disk = Mount::readOnly(QStringLiteral("/etc/policy"));

    Caller caller;
    QCOMPARE(caller.setSwitch(Cellular, false).value(), QVariant(false));
    QCOMPARE(daemon.messages(caller.busName()).filter(QStringLiteral("GetConnection")).size(), 3);
}

void TestCallerChecks::repeatedWritesAreCheckedAfresh()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Bus bus;
    QDBusConnection client = bus.connect();
    daemon.forget();

    QDBusMessage write = QDBusMessage::createMethodCall(
        QStringLiteral("org.kvt.PolicyManager"), QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("SetKeyValue"));
    write.setArguments({Location, QVariant::fromValue(QDBusVariant(true))});
    for (int i = 0; i < 3; ++i)
        client.asyncCall(write);
    QTRY_COMPARE(daemon.messages().filter(QStringLiteral("return true")).size(), 3);

    QCOMPARE(daemon.messages(client.baseService()).filter(QStringLiteral("GetConnection")),
             (QStringList{ProcessQuery, ProcessQuery, ProcessQuery}));
}

void TestCallerChecks::ownWorkIsNotChecked()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1, 2}, true);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    Files::write(SwitchFile, "[policy]\ncellular=false\n");
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(daemon.messages().filter(QStringLiteral("GetConnection")), QStringList());
    QCOMPARE(plugin.calls().filter(QStringLiteral("setKeyValue")),
             texts({"setKeyValue cellular false"}));
    QCOMPARE(Files::values(PolicyFile).value(Location), QStringLiteral("true"));
}

void TestCallerChecks::announcementsOfPluginsAreNotChecked()
{
    SwitchPlugin switches;
    switches.setSwitch(Cellular, {2}, true);
    LockPlugin locks(QStringLiteral("lock.so"), QStringLiteral("lock"), {Location});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    switches.announce(Cellular, true);
    locks.setLocked({Location});
    locks.announce(Location, true);
    QCOMPARE(daemon.messages(),
             texts({"PolicyChanged LocationEnabled true", "SwitchChanged cellular true",
                    "PolicyChanged LocationEnabled false"}));
}

QTEST_GUILESS_MAIN(TestCallerChecks)
#include "tst_callerchecks.moc"
