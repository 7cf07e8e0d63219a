// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "support/enforcement.h"
#include "support/neighbour.h"

#include <QTest>

using Simulator::Fault;
using Support::Enforcement;

namespace {

const QString Microphone = QStringLiteral("MicrophoneEnabled");
const QString AudioPolicyName = QStringLiteral("org.freedesktop.ohm.mdm");

/// The microphone shows every task: it is set for both values.
QStringList microphoneStates(Enforcement &device)
{
    device.monitor().settle();
    QStringList states;
    for (const QString &call : device.calls(AudioPolicyName))
        states.append(call.contains(QStringLiteral("\"enabled\"")) ? QStringLiteral("enabled")
                                                                   : QStringLiteral("disabled"));
    return states;
}

const QString Enabled = QStringLiteral("enabled");
const QString Disabled = QStringLiteral("disabled");

} // namespace

class TestServiceWatching : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(Microphone, false));

    QCOMPARE(device.calls(AudioPolicyName), QStringList());
    QCOMPARE(device.log().filter(QStringLiteral("microphone")), QStringList());
}

/// Two tasks are of the start: the stored default and the set-up. None is merged with another.
void TestServiceWatching::waitingTasksRunInOrderExactlyOnce()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(Microphone, false));
    QVERIFY(device.change(Microphone, true));
    QVERIFY(device.change(Microphone, false));
    device.forget();

    audio.appear();

    QCOMPARE(microphoneStates(device),
             QStringList({Enabled, Enabled, Disabled, Enabled, Disabled}));
    QCOMPARE(device.log(), QStringList());
}

void TestServiceWatching::serviceThatIsThereAtStartGetsTasksAtOnce()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());

    // Before the daemon had its name, so before anybody could have called it.
    const auto messages = device.monitor().messages([](const Support::BusMessage &message) {
        return message.isCallOf(QStringLiteral("Set"))
            || (message.isCallOf(QStringLiteral("RequestName"))
                && message.arguments.value(0) == QStringLiteral("org.kvt.PolicyManager"));
    });
    QVERIFY(!messages.isEmpty());
    QCOMPARE(messages.last().member, QStringLiteral("RequestName"));
    QCOMPARE(microphoneStates(device), QStringList({Enabled, Enabled}));
}

void TestServiceWatching::newTaskWaitsForTheReplayToEnd()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.fail(Fault::late(100));
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(Microphone, false));
    QVERIFY(device.change(Microphone, true));
    device.forget();

    audio.appear();
    QVERIFY(device.monitor().waitFor([](const Support::BusMessage &message) {
        return message.isCallOf(QStringLiteral("Set"));
    }));
    QVERIFY(device.change(Microphone, false));

    QCOMPARE(microphoneStates(device),
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
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(QStringLiteral("InternetSharingEnabled"), false));
    device.forget();

    Support::Bus bus;
    QDBusConnection connection = bus.connect();
    QVERIFY(connection.registerService(name));
    QVERIFY(connection.unregisterService(name));

    QCOMPARE(device.calls(), QStringList());
    QCOMPARE(device.log(), QStringList());
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
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    device.daemon().setEnvironment(QStringLiteral("QT_HASH_SEED"), seed);
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(QStringLiteral("BrowserEnabled"), false));

    QStringList members;
    for (const QString &call : device.calls())
        members.append(call.section(QLatin1Char(' '), 3, 3));
    QCOMPARE(members,
             QStringList({QStringLiteral("Terminate"), QStringLiteral("Terminate"),
                          QStringLiteral("AddToGlobalDenylist")}));
}

void TestServiceWatching::eachServiceHasAQueueOfItsOwn()
{
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    Support::Neighbour<Simulator::AudioPolicy> audio;
    Enforcement device;
    QVERIFY(device.start());
    audio.appear();
    device.forget();

    QVERIFY(device.change(Microphone, false));
    QCOMPARE(microphoneStates(device), QStringList(Disabled));
    QCOMPARE(device.calls().size(), 1);

    device.forget();
    sandbox.appear();
    const QStringList calls = device.calls();
    QCOMPARE(calls.size(), 13); // six policies twice, and the change
    QVERIFY(calls.last().contains(QStringLiteral(" AddToGlobalDenylist as [[]]")));
}

QTEST_GUILESS_MAIN(TestServiceWatching)
#include "tst_servicewatching.moc"
