// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/borrowedsockets.h"
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/groupmembership.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/untouched.h"
#include "support/watcheddaemon.h"

#include <QDBusVariant>
#include <QtTest>

#include <signal.h>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");
const QString Policy = QStringLiteral("Policy");
const QString Switch = QStringLiteral("Switch");
const QString Write = QStringLiteral("SetKeyValue");
const QString KeyPolicyTypes = QStringLiteral("keyPolicyTypes");

QVariant inVariant(bool value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

/// Ends a caller's process so that nothing of it is left in /proc.
void end(const Caller &caller)
{
    ::kill(static_cast<pid_t>(caller.processId()), SIGKILL);
    const QString entry = QStringLiteral("/proc/%1").arg(caller.processId());
    if (!waitFor([&] { return !QFile::exists(entry); }))
        qFatal("A caller does not end");
}

} // namespace

/// Callers that are gone when the daemon looks at them.
class TestGoneCallers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void goneBeforeThePolicyCheck_data() { identities(); }
    void goneBeforeThePolicyCheck();
    void goneBeforeTheSwitchCheck_data() { identities(); }
    void goneBeforeTheSwitchCheck();
    void goneBetweenTheChecksOfAPolicy_data();
    void goneBetweenTheChecksOfAPolicy();
    void goneBetweenTheChecksOfASwitch();
    void goneProcessIsJudgedByItsUser_data();
    void goneProcessIsJudgedByItsUser();
    void failedQueriesStandForRoot();

private:
    void identities();
};

void TestGoneCallers::init()
{
    Files::reset();
}

void TestGoneCallers::identities()
{
    QTest::addColumn<Identity>("identity");
    QTest::newRow("root") << Identity::root();
    QTest::newRow("privileged") << Identity::of("operator");
    QTest::newRow("member of pellora-mdm") << Identity::of("mdm");
    QTest::newRow("guest") << Identity::of("guest");
}

void TestGoneCallers::goneBeforeThePolicyCheck()
{
    QFETCH(Identity, identity);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Untouched all(daemon);

    daemon.process().pause();
    Caller caller(identity);
    caller.send(Policy, Write, {Camera, inVariant(false)});
    caller.vanish();
    daemon.process().resume();

    QCOMPARE(daemon.messages(caller.busName()), BothQueries + QStringList(denialReply(0)));
    QCOMPARE(all.traces(), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestGoneCallers::goneBeforeTheSwitchCheck()
{
    QFETCH(Identity, identity);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Untouched all(daemon);
    const int before = plugin.mark();

    daemon.process().pause();
    Caller caller(identity);
    caller.send(Switch, Write, {Cellular, inVariant(false)});
    caller.vanish();
    daemon.process().resume();

    QCOMPARE(daemon.messages(caller.busName()), BothQueries + QStringList(denialReply(0)));
    QCOMPARE(plugin.calls(before), QStringList());
    QCOMPARE(all.traces(), QStringList());
    QVERIFY(!QFile::exists(SwitchFile));
}

void TestGoneCallers::goneBetweenTheChecksOfAPolicy_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("to true") << true;
    QTest::newRow("to false") << false;
}

/// The change is made and announced all the same; only its enforcement is refused.
void TestGoneCallers::goneBetweenTheChecksOfAPolicy()
{
    QFETCH(bool, value);
    const QByteArray text = value ? "true" : "false";
    const QByteArray other = value ? "false" : "true";
    Files::write(PolicyFile, "[policy]\nCameraEnabled=" + other + "\n");
    SwitchPlugin plugin; // its one switch governs another policy
    plugin.setSwitch(Cellular, {2}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    plugin.hold(KeyPolicyTypes);
    Caller caller;
    caller.send(Policy, Write, {Camera, inVariant(value)});
    QVERIFY(plugin.waitForCall(QStringLiteral("holding"), before));
    caller.vanish();
    plugin.release();

    const QString change = QStringLiteral("CameraEnabled changed. Old value %1. New value %2.")
                               .arg(QString::fromLatin1(other), QString::fromLatin1(text));
    QStringList messages(ProcessQuery);
    messages << eventCall(change) << BothQueries << denialReply(0)
             << QLatin1String("PolicyChanged CameraEnabled ") + QString::fromLatin1(text);
    QCOMPARE(daemon.messages(caller.busName()), messages);
    QCOMPARE(daemon.recorded(), QStringList(QLatin1String("Policy ") + change));
    QCOMPARE(daemon.logged(),
             QStringList(QStringLiteral("warning|default|Failed to enforce policy: "
                                        "\"CameraEnabled\" = %1")
                             .arg(QString::fromLatin1(text))));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QString::fromLatin1(text));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(value));
    QCOMPARE(QFile::exists(CameraMarker), !value); // as before
}

void TestGoneCallers::goneBetweenTheChecksOfASwitch()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1, 3}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    plugin.hold(QStringLiteral("setKeyValue"));
    Caller caller;
    caller.send(Switch, Write, {Cellular, inVariant(false)});
    QVERIFY(plugin.waitForCall(QStringLiteral("holding"), before));
    caller.vanish();
    plugin.release();

    const QString change = QStringLiteral("cellular changed. Old value true. New value false.");
    QStringList messages(ProcessQuery);
    messages << BothQueries << denialReply(0) << QStringLiteral("PolicyChanged CameraEnabled false")
             << BothQueries << denialReply(0)
             << QStringLiteral("PolicyChanged BluetoothEnabled false")
             << QStringLiteral("SwitchChanged cellular false") << eventCall(change);
    QCOMPARE(daemon.messages(caller.busName()), messages);
    QCOMPARE(daemon.recorded(), QStringList(QLatin1String("Policy ") + change));
    QCOMPARE(daemon.logged(),
             texts({"warning|default|Failed to enforce switch policy: \"cellular\" - "
                    "\"CameraEnabled\"",
                    "warning|default|Failed to enforce switch policy: \"cellular\" - "
                    "\"BluetoothEnabled\""}));
    QCOMPARE(plugin.value(Cellular), QJsonValue(false));
    QCOMPARE(Files::values(SwitchFile).value(Cellular), QStringLiteral("false"));
    QVERIFY(QFile::exists(CameraMarker)); // as before
}

void TestGoneCallers::goneProcessIsJudgedByItsUser_data()
{
    QTest::addColumn<Identity>("identity");
    QTest::addColumn<bool>("isAllowed");
    QTest::newRow("root") << Identity::root() << false;
    QTest::newRow("privileged") << Identity::of("operator") << false;
    QTest::newRow("member of pellora-mdm") << Identity::of("mdm") << true;
    QTest::newRow("guest") << Identity::of("guest") << false;
}

/// The connection outlives the process that opened it: the bus still knows both ids.
void TestGoneCallers::goneProcessIsJudgedByItsUser()
{
    QFETCH(Identity, identity);
    QFETCH(bool, isAllowed);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    daemon.process().pause();
    Caller caller(identity);
    caller.send(Policy, Write, {Camera, inVariant(false)});
    const BorrowedSockets connection(caller.processId());
    end(caller);
    daemon.process().resume();

    const QStringList messages = daemon.messages(caller.busName());
    const QStringList refused = BothQueries + QStringList(denialReply(caller.processId()));
    QStringList allowed = BothQueries;
    allowed << eventCall("CameraEnabled changed. Old value true. New value false.") << BothQueries
            << texts({"PolicyChanged CameraEnabled false", "return true"});
    QCOMPARE(messages, isAllowed ? allowed : refused);
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(QFile::exists(CameraMarker), !isAllowed);
}

void TestGoneCallers::failedQueriesStandForRoot()
{
    const GroupMembership membership("root", "pellora-mdm");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    daemon.process().pause();
    Caller caller(Identity::of("guest"));
    caller.send(Policy, Write, {Camera, inVariant(false)});
    caller.vanish();
    daemon.process().resume();

    QCOMPARE(daemon.messages(caller.busName()).filter(QStringLiteral("GetConnection")),
             BothQueries + BothQueries);
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QVERIFY(!QFile::exists(CameraMarker));
}

QTEST_GUILESS_MAIN(TestGoneCallers)
#include "tst_gonecallers.moc"
