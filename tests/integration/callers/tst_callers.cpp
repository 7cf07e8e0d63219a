// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/untouched.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");
const QString AccessDenied = QStringLiteral("org.freedesktop.DBus.Error.AccessDenied");

} // namespace

/// Who may change a value, and how the daemon finds out.
class TestCallers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void callersThatMayChangeValues_data();
    void callersThatMayChangeValues();
    void callersThatMayNotChangePolicies_data() { strangers(); }
    void callersThatMayNotChangePolicies();
    void callersThatMayNotChangeSwitches_data() { strangers(); }
    void callersThatMayNotChangeSwitches();
    void refusalGoesBeforeAbsenceOfThePlugin();
    void refusalGoesBeforeALock();
    void readingIsOpenToEverybody();

private:
    void strangers();
};

void TestCallers::init()
{
    Files::reset();
}

void TestCallers::callersThatMayChangeValues_data()
{
    QTest::addColumn<Identity>("identity");
    QTest::addColumn<bool>("userIsAsked");

    const Identity guest = Identity::of("guest");
    const Identity mdm = Identity::of("mdm");
    QTest::newRow("root") << Identity::root() << false;
    QTest::newRow("root in an ordinary group") << Identity::root().inGroup("guest") << false;
    QTest::newRow("primary group privileged") << Identity::of("operator") << false;
    QTest::newRow("guest as group privileged") << guest.inGroup("privileged") << false;
    QTest::newRow("guest as effective group privileged")
        << guest.inGroup("privileged").asEffective() << false;
    QTest::newRow("member of pellora-mdm as group privileged")
        << mdm.inGroup("privileged") << false;
    QTest::newRow("member of pellora-mdm") << mdm << true;
    QTest::newRow("member of pellora-mdm in another group") << mdm.inGroup("guest") << true;
    QTest::newRow("effective user is a member of pellora-mdm") << mdm.asEffective() << true;
    QTest::newRow("primary group pellora-mdm") << Identity::of("agent") << true;
    QTest::newRow("primary group pellora-mdm, as another group")
        << Identity::of("agent").inGroup("Privileged") << true;
}

void TestCallers::callersThatMayChangeValues()
{
    QFETCH(Identity, identity);
    QFETCH(bool, userIsAsked);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::exists(CameraMarker));
    daemon.forget();

    Caller caller(identity);
    const Reply reply = caller.setPolicy(Camera, false);
    QCOMPARE(reply.signature, QStringLiteral("b"));
    QCOMPARE(reply.value(), QVariant(true));

    QStringList check(ProcessQuery);
    if (userIsAsked)
        check.append(UserQuery);
    const QStringList event(eventCall("CameraEnabled changed. Old value true. New value false."));
    QCOMPARE(daemon.messages(caller.busName()),
             check + event + check + texts({"PolicyChanged CameraEnabled false", "return true"}));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("false"));
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestCallers::strangers()
{
    QTest::addColumn<Identity>("identity");

    const Identity guest = Identity::of("guest");
    QTest::newRow("guest") << guest;
    QTest::newRow("member of privileged under the own group") << Identity::of("deputy");
    QTest::newRow("primary group Privileged") << Identity::of("pretender");
    QTest::newRow("real user root, effective user guest") << guest.asEffective();
    // The user's membership is looked up, the groups of the process are not.
    QTest::newRow("guest as group pellora-mdm") << guest.inGroup("pellora-mdm");
    QTest::newRow("guest as group root") << guest.inGroup("root");
}

void TestCallers::callersThatMayNotChangePolicies()
{
    QFETCH(Identity, identity);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Untouched all(daemon);

    Caller caller(identity);
    const Reply reply = caller.setPolicy(Camera, false);
    QCOMPARE(reply.errorName, AccessDenied);
    QCOMPARE(reply.errorMessage, denialText(caller.processId()));

    QCOMPARE(daemon.messages(caller.busName()),
             BothQueries + QStringList(denialReply(caller.processId())));
    QCOMPARE(all.traces(), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestCallers::callersThatMayNotChangeSwitches()
{
    QFETCH(Identity, identity);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Untouched all(daemon);
    const int before = plugin.mark();

    Caller caller(identity);
    const Reply reply = caller.setSwitch(Cellular, false);
    QCOMPARE(reply.errorName, AccessDenied);
    QCOMPARE(reply.errorMessage, denialText(caller.processId()));

    QCOMPARE(daemon.messages(caller.busName()),
             BothQueries + QStringList(denialReply(caller.processId())));
    QCOMPARE(plugin.calls(before), QStringList());
    QCOMPARE(plugin.value(Cellular), QJsonValue(true));
    QCOMPARE(all.traces(), QStringList());
    QVERIFY(!QFile::exists(SwitchFile));
}

void TestCallers::refusalGoesBeforeAbsenceOfThePlugin()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    Caller guest(Identity::of("guest"));
    QCOMPARE(guest.setSwitch(Cellular, true).errorName, AccessDenied);
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(!QFile::exists(SwitchFile));
}

void TestCallers::refusalGoesBeforeALock()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    plugin.setLocked({Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    Caller guest(Identity::of("guest"));
    const Reply denial = guest.setPolicy(Camera, true);
    QCOMPARE(denial.errorMessage, denialText(guest.processId()));
    QCOMPARE(plugin.calls(before), QStringList());

    const Reply reply = Caller().setPolicy(Camera, true);
    QVERIFY(!reply.isError());
    QCOMPARE(reply.value(), QVariant(false));
    QVERIFY(plugin.mark() > before);
}

void TestCallers::readingIsOpenToEverybody()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    const Identity guest = Identity::of("guest");
    const QString interface = QStringLiteral("Switch");
    QCOMPARE(Caller(guest).policy(Camera).value(), QVariant(true));
    QCOMPARE(Caller(guest).switchValue(Cellular).value(), QVariant(true));
    QCOMPARE(Caller(guest).call(interface, QStringLiteral("Keys"), {}).value().toList(),
             QVariantList{Cellular});
    QCOMPARE(Caller(guest)
                 .call(interface, QStringLiteral("KeyPolicyTypes"), {Cellular})
                 .value()
                 .toList(),
             QVariantList{1});
    QCOMPARE(daemon.messages(),
             texts({"return true", "return true", "return cellular", "return 1"}));
}

QTEST_GUILESS_MAIN(TestCallers)
#include "tst_callers.moc"
