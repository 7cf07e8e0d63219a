// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "support/enforcement.h"
#include "support/neighbour.h"

#include <QDBusConnectionInterface>
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

QString failure(const char *verb, const char *error)
{
    return QStringLiteral("warning|default|Failed to %1 microphone"
                          " \"org.freedesktop.DBus.Error.%2\"")
        .arg(QLatin1String(verb), QLatin1String(error));
}

} // namespace

/// Services that leave, come back and change hands, which the daemon takes no notice of.
class TestServiceDepartures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void serviceThatComesBackGetsNothingAgain();
    void serviceThatLeftStillGetsItsTasks();
    void serviceThatComesBackGetsTasksAgain();
    void tasksOfAServiceThatLeavesAtOnceAreLost();
    void tasksThatFailInTheReplayAreLost();
    void nameThatChangesHandsGetsNothingAgain();
};

void TestServiceDepartures::serviceThatComesBackGetsNothingAgain()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    Enforcement device;
    QVERIFY(device.start());
    audio.appear();
    QCOMPARE(microphoneStates(device), QStringList({Enabled, Enabled}));
    device.forget();

    audio.leave();
    audio.appear();
    audio.leave();
    audio.appear();

    QCOMPARE(microphoneStates(device), QStringList());
    QCOMPARE(device.log(), QStringList());
}

void TestServiceDepartures::serviceThatLeftStillGetsItsTasks()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());
    audio.leave();
    device.forget();

    QVERIFY(device.change(Microphone, false));
    QVERIFY(device.change(Microphone, true));

    QCOMPARE(microphoneStates(device), QStringList({Disabled, Enabled}));
    QCOMPARE(
        device.log(),
        QStringList({failure("disable", "ServiceUnknown"), failure("enable", "ServiceUnknown")}));

    device.forget();
    audio.appear();
    QCOMPARE(microphoneStates(device), QStringList());
}

void TestServiceDepartures::serviceThatComesBackGetsTasksAgain()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());
    audio.leave();
    audio.appear();
    device.forget();

    QVERIFY(device.change(Microphone, false));

    QCOMPARE(microphoneStates(device), QStringList(Disabled));
    QCOMPARE(device.log(), QStringList());
}

/// The daemon hears of it when the service has gone already.
void TestServiceDepartures::tasksOfAServiceThatLeavesAtOnceAreLost()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    device.daemon().pause();
    audio.appear();
    audio.leave();
    device.daemon().resume();

    QCOMPARE(microphoneStates(device), QStringList({Enabled, Enabled}));
    const QString unknown = failure("enable", "ServiceUnknown");
    QCOMPARE(device.log(), QStringList({unknown, unknown}));

    device.forget();
    audio.appear();
    QCOMPARE(microphoneStates(device), QStringList());
}

void TestServiceDepartures::tasksThatFailInTheReplayAreLost()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.fail(Fault::error());
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    audio.appear();

    QCOMPARE(microphoneStates(device), QStringList({Enabled, Enabled}));
    QCOMPARE(device.log(), QStringList({failure("enable", "Failed"), failure("enable", "Failed")}));

    device.forget();
    audio.mend();
    QVERIFY(device.change(Microphone, false));
    QCOMPARE(microphoneStates(device), QStringList(Disabled));
}

void TestServiceDepartures::nameThatChangesHandsGetsNothingAgain()
{
    Support::Bus bus;
    QDBusConnection first = bus.connect();
    QDBusConnection second = bus.connect();
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(first.interface()->registerService(AudioPolicyName,
                                               QDBusConnectionInterface::DontQueueService,
                                               QDBusConnectionInterface::AllowReplacement));
    QCOMPARE(microphoneStates(device), QStringList({Enabled, Enabled}));
    device.forget();

    QVERIFY(second.interface()->registerService(AudioPolicyName,
                                                QDBusConnectionInterface::ReplaceExistingService));

    QCOMPARE(microphoneStates(device), QStringList());
    const auto changes = device.monitor().messages([](const Support::BusMessage &message) {
        return message.isSignal(QStringLiteral("NameOwnerChanged"))
            && message.arguments.value(0) == AudioPolicyName;
    });
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).arguments.value(1).toString(), first.baseService());
}

QTEST_GUILESS_MAIN(TestServiceDepartures)
#include "tst_servicedepartures.moc"
