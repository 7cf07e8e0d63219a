// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/microphonestates.h"
#include "support/neighbour.h"

#include <QDBusConnectionInterface>
#include <QTest>

using Simulator::Fault;
using namespace Support;

namespace {

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
    void init() { Files::reset(); }

    void serviceThatComesBackGetsNothingAgain();
    void serviceThatLeftStillGetsItsTasks();
    void serviceThatComesBackGetsTasksAgain();
    void tasksOfAServiceThatLeavesAtOnceAreLost();
    void tasksThatFailInTheReplayAreLost();
    void nameThatChangesHandsGetsNothingAgain();
};

void TestServiceDepartures::serviceThatComesBackGetsNothingAgain()
{
    Neighbour<Simulator::AudioPolicy> audio;
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    audio.appear();
    QCOMPARE(microphoneStates(daemon), QStringList({Enabled, Enabled}));
    daemon.forget();

    audio.leave();
    audio.appear();
    audio.leave();
    audio.appear();

    QCOMPARE(microphoneStates(daemon), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

void TestServiceDepartures::serviceThatLeftStillGetsItsTasks()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    audio.leave();
    daemon.forget();

    QVERIFY(daemon.change(Microphone, false));
    QVERIFY(daemon.change(Microphone, true));

    QCOMPARE(microphoneStates(daemon), QStringList({Disabled, Enabled}));
    QCOMPARE(
        daemon.logged(),
        QStringList({failure("disable", "ServiceUnknown"), failure("enable", "ServiceUnknown")}));

    daemon.forget();
    audio.appear();
    QCOMPARE(microphoneStates(daemon), QStringList());
}

void TestServiceDepartures::serviceThatComesBackGetsTasksAgain()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    audio.leave();
    audio.appear();
    daemon.forget();

    QVERIFY(daemon.change(Microphone, false));

    QCOMPARE(microphoneStates(daemon), QStringList(Disabled));
    QCOMPARE(daemon.logged(), QStringList());
}

/// The daemon hears of it when the service has gone already.
void TestServiceDepartures::tasksOfAServiceThatLeavesAtOnceAreLost()
{
    Neighbour<Simulator::AudioPolicy> audio;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    daemon.process().pause();
    audio.appear();
    audio.leave();
    daemon.process().resume();

    QCOMPARE(microphoneStates(daemon), QStringList({Enabled, Enabled}));
    const QString unknown = failure("enable", "ServiceUnknown");
    QCOMPARE(daemon.logged(), QStringList({unknown, unknown}));

    daemon.forget();
    audio.appear();
    QCOMPARE(microphoneStates(daemon), QStringList());
}

void TestServiceDepartures::tasksThatFailInTheReplayAreLost()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.fail(Fault::error());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    audio.appear();

    QCOMPARE(microphoneStates(daemon), QStringList({Enabled, Enabled}));
    QCOMPARE(daemon.logged(),
             QStringList({failure("enable", "Failed"), failure("enable", "Failed")}));

    daemon.forget();
    audio.mend();
    QVERIFY(daemon.change(Microphone, false));
    QCOMPARE(microphoneStates(daemon), QStringList(Disabled));
}

void TestServiceDepartures::nameThatChangesHandsGetsNothingAgain()
{
    Bus bus;
    QDBusConnection first = bus.connect();
    QDBusConnection second = bus.connect();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(first.interface()->registerService(AudioPolicyName,
                                               QDBusConnectionInterface::DontQueueService,
                                               QDBusConnectionInterface::AllowReplacement));
    QCOMPARE(microphoneStates(daemon), QStringList({Enabled, Enabled}));
    daemon.forget();

    QVERIFY(second.interface()->registerService(AudioPolicyName,
                                                QDBusConnectionInterface::ReplaceExistingService));

    QCOMPARE(microphoneStates(daemon), QStringList());
    const auto changes = daemon.monitor().messages([](const BusMessage &message) {
        return message.isSignal(QStringLiteral("NameOwnerChanged"))
            && message.arguments.value(0) == AudioPolicyName;
    });
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).arguments.value(1).toString(), first.baseService());
}

QTEST_GUILESS_MAIN(TestServiceDepartures)
#include "tst_servicedepartures.moc"
