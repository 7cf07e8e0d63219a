// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/microphonestates.h"
#include "support/neighbour.h"

#include <QTest>

using Simulator::Fault;
using namespace Support;

class TestServiceWatching : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void nothingRunsBeforeTheServiceIsSeen();
    void waitingTasksRunInOrderExactlyOnce();
    void serviceThatIsThereAtStartGetsTasksAtOnce();
    void newTaskWaitsForTheReplayToEnd();
    void unwatchedNamesChangeNothing_data();
    void unwatchedNamesChangeNothing();
    void directRouteComesFirst_data();
    void directRouteComesFirst();
    void eachServiceHasAQueueOfItsOwn();
};

void TestServiceWatching::nothingRunsBeforeTheServiceIsSeen()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.change(Microphone, false));

    QCOMPARE(daemon.calls(AudioPolicyName), QStringList());
    QCOMPARE(daemon.logged().filter(QStringLiteral("microphone")), QStringList());
}

/// Two tasks are of the start: the stored default and the set-up. None is merged with another.
void TestServiceWatching::waitingTasksRunInOrderExactlyOnce()
{
    Neighbour<Simulator::AudioPolicy> audio;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(Microphone, false));
    QVERIFY(daemon.change(Microphone, true));
    QVERIFY(daemon.change(Microphone, false));
    daemon.forget();

    audio.appear();

    QCOMPARE(microphoneStates(daemon),
             QStringList({Enabled, Enabled, Disabled, Enabled, Disabled}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestServiceWatching::serviceThatIsThereAtStartGetsTasksAtOnce()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    // Before the daemon had its name, so before anybody could have called it.
    const auto messages = daemon.monitor().messages([](const BusMessage &message) {
        return message.isCallOf(QStringLiteral("Set"))
            || (message.isCallOf(QStringLiteral("RequestName"))
                && message.arguments.value(0) == QStringLiteral("org.kvt.PolicyManager"));
    });
    QVERIFY(!messages.isEmpty());
    QCOMPARE(messages.last().member, QStringLiteral("RequestName"));
    QCOMPARE(microphoneStates(daemon), QStringList({Enabled, Enabled}));
}

void TestServiceWatching::newTaskWaitsForTheReplayToEnd()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.fail(Fault::late(100));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(Microphone, false));
    QVERIFY(daemon.change(Microphone, true));
    daemon.forget();

    audio.appear();
    QVERIFY(daemon.monitor().waitFor(
        [](const BusMessage &message) { return message.isCallOf(QStringLiteral("Set")); }));
    QVERIFY(daemon.change(Microphone, false));

    QCOMPARE(microphoneStates(daemon),
             QStringList({Enabled, Enabled, Disabled, Enabled, Disabled}));
}

void TestServiceWatching::unwatchedNamesChangeNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("another service") << QStringLiteral("org.example.Other");
    QTest::newRow("a longer name") << QStringLiteral("net.connman.vpn");
    QTest::newRow("a shorter name") << QStringLiteral("org.pelloraos");
    QTest::newRow("other letters") << QStringLiteral("net.ConnMan");
    QTest::newRow("only on the direct route") << QStringLiteral("org.kvt.RuntimeManager");
}

void TestServiceWatching::unwatchedNamesChangeNothing()
{
    QFETCH(QString, name);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(QStringLiteral("InternetSharingEnabled"), false));
    daemon.forget();

    Bus bus;
    QDBusConnection connection = bus.connect();
    QVERIFY(connection.registerService(name));
    QVERIFY(connection.unregisterService(name));

    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

void TestServiceWatching::directRouteComesFirst_data()
{
    QTest::addColumn<QString>("seed");
    for (int seed = 0; seed < 4; ++seed)
        QTest::addRow("hash seed %d", seed) << QString::number(seed);
}

/// Whatever order the tables of the daemon have in this run.
void TestServiceWatching::directRouteComesFirst()
{
    QFETCH(QString, seed);
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    daemon.process().setEnvironment(QStringLiteral("QT_HASH_SEED"), seed);
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(QStringLiteral("BrowserEnabled"), false));

    QStringList members;
    for (const QString &call : daemon.calls())
        members.append(call.section(QLatin1Char(' '), 3, 3));
    QCOMPARE(members,
             QStringList({QStringLiteral("Terminate"), QStringLiteral("Terminate"),
                          QStringLiteral("AddToGlobalDenylist")}));
}

void TestServiceWatching::eachServiceHasAQueueOfItsOwn()
{
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    Neighbour<Simulator::AudioPolicy> audio;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    audio.appear();
    daemon.forget();

    QVERIFY(daemon.change(Microphone, false));
    QCOMPARE(microphoneStates(daemon), QStringList(Disabled));
    QCOMPARE(daemon.calls().size(), 1);

    daemon.forget();
    sandbox.appear();
    const QStringList calls = daemon.calls();
    QCOMPARE(calls.size(), 13); // six policies twice, and the change
    QVERIFY(calls.last().contains(QStringLiteral(" AddToGlobalDenylist as [[]]")));
}

QTEST_GUILESS_MAIN(TestServiceWatching)
#include "tst_servicewatching.moc"
