// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/deviceinformation.h"
#include "simulator/networktechnology.h"
#include "simulator/usbmodes.h"
#include "tests/unit/simulatortest.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QtTest>

using namespace Simulator;
using namespace SimulatorAddresses;

class tst_SimulatorFaults : public SimulatorTest
{
    Q_OBJECT

public Q_SLOTS:
    void receive(const QDBusMessage &message) { m_received.append(message); }

private Q_SLOTS:
    void comesAndGoes();
    void hasANewNameEachTime();
    void cannotTakeATakenName();
    void keepsItsStateWhileAbsent();
    void recordsCalls();
    void failsOnPurpose();
    void failsOneMember();
    void answersLate();
    void staysSilent();
    void answersWrongly();
    void diesInTheCall();
    void forgetsLateAnswersWhenItLeaves();
    void sendsAnySignal();
    void servesItsOwnThread();

private:
    QVector<QDBusMessage> m_received;
};

void tst_SimulatorFaults::comesAndGoes()
{
    auto *audio = m_thread->create<AudioPolicy>();
    const auto *bus = QDBusConnection::systemBus().interface();
    QVERIFY(!bus->isServiceRegistered(Audio.service));
    for (int round = 0; round < 3; ++round) {
        QVERIFY(there([=] { return audio->appear(); }));
        QVERIFY(there([=] { return audio->isPresent(); }));
        QVERIFY(bus->isServiceRegistered(Audio.service));
        there([=] { audio->leave(); });
        QVERIFY(!there([=] { return audio->isPresent(); }));
        QTRY_VERIFY(!bus->isServiceRegistered(Audio.service));
    }
}

void tst_SimulatorFaults::hasANewNameEachTime()
{
    auto *audio = host<AudioPolicy>();
    host<UsbModes>();
    auto *bus = QDBusConnection::systemBus().interface();
    const QString first = bus->serviceOwner(Audio.service);
    QVERIFY(first != bus->serviceOwner(Modes.service).value());
    there([=] { audio->leave(); });
    QTRY_VERIFY(!bus->isServiceRegistered(Audio.service));
    there([=] { audio->appear(); });
    QVERIFY(first != bus->serviceOwner(Audio.service).value());
}

void tst_SimulatorFaults::cannotTakeATakenName()
{
    host<AudioPolicy>();
    auto *second = m_thread->create<AudioPolicy>();
    QVERIFY(!there([=] { return second->appear(); }));
    QVERIFY(!there([=] { return second->isPresent(); }));
    // The one that has it goes on.
    QCOMPARE(ask(Audio, "Set", {QStringLiteral("microphone"), QStringLiteral("disabled")}).type(),
             QDBusMessage::ReplyMessage);
}

void tst_SimulatorFaults::keepsItsStateWhileAbsent()
{
    auto *sandbox = host<ApplicationSandbox>();
    const QStringList one(QStringLiteral("org.a"));
    ask(Sandbox, "AddToGlobalDenylist", {one});
    there([=] { sandbox->leave(); });
    QCOMPARE(there([=] { return sandbox->denylist(); }), one);
}

void tst_SimulatorFaults::recordsCalls()
{
    auto *wifi = host<NetworkTechnology>();
    QVector<Call> heard;
    connect(wifi, &Service::called, this, [&](const Call &call) { heard.append(call); });
    const QDateTime before = QDateTime::currentDateTime();
    ask(Wifi, "GetProperties");
    ask(Wifi, "SetProperty", {QStringLiteral("Tethering"), variant(true)});
    QTRY_COMPARE(heard.size(), 2);

    const auto calls = there([=] { return wifi->calls(QStringLiteral("SetProperty")); });
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.at(0).sender, QDBusConnection::systemBus().baseService());
    QCOMPARE(calls.at(0).path, Wifi.path);
    QCOMPARE(calls.at(0).interface, Wifi.interface);
    QCOMPARE(calls.at(0).signature, QStringLiteral("sv"));
    QCOMPARE(calls.at(0).arguments, (QVariantList{QStringLiteral("Tethering"), true}));
    QVERIFY(calls.at(0).time >= before);
    QCOMPARE(heard.at(1).arguments, calls.at(0).arguments);

    QCOMPARE(there([=] { return wifi->calls(); }).size(), 2);
    there([=] { wifi->forgetCalls(); });
    QCOMPARE(there([=] { return wifi->calls(); }).size(), 0);
}

void tst_SimulatorFaults::failsOnPurpose()
{
    auto *developer = host<DeveloperMode>();
    there([=] { developer->setFault(Fault::error(QStringLiteral("org.example.Error"))); });
    QCOMPARE(ask(Developer, "SetRemoteConnectionEnabled", {false}).errorName(),
             QStringLiteral("org.example.Error"));
    QVERIFY(there([=] { return developer->isRemoteConnectionEnabled(); }));
    QCOMPARE(there([=] { return developer->calls(); }).size(), 1);
    there([=] { developer->clearFaults(); });
    QCOMPARE(ask(Developer, "SetRemoteConnectionEnabled", {false}).type(),
             QDBusMessage::ReplyMessage);
}

void tst_SimulatorFaults::failsOneMember()
{
    auto *modes = host<UsbModes>();
    there([=] { modes->setFault(QStringLiteral("set_whitelisted_modes"), Fault::error()); });
    QCOMPARE(ask(Modes, "set_whitelisted_modes", {QString()}).errorName(),
             QStringLiteral("org.freedesktop.DBus.Error.Failed"));
    QCOMPARE(ask(Modes, "set_whitelisted", {QStringLiteral("mtp_mode"), false}).type(),
             QDBusMessage::ReplyMessage);
}

void tst_SimulatorFaults::answersLate()
{
    auto *audio = host<AudioPolicy>();
    there([=] { audio->setFault(Fault::late(150)); });
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(ask(Audio, "Set", {QStringLiteral("microphone"), QStringLiteral("disabled")}).type(),
             QDBusMessage::ReplyMessage);
    QVERIFY(timer.elapsed() >= 140);
}

void tst_SimulatorFaults::staysSilent()
{
    auto *audio = host<AudioPolicy>();
    there([=] { audio->setFault(Fault::silence()); });
    const QDBusMessage reply =
        ask(Audio, "Set", {QStringLiteral("microphone"), QStringLiteral("disabled")}, 200);
    QCOMPARE(reply.errorName(), NoReply);
    QCOMPARE(there([=] { return audio->calls(); }).size(), 1);
    QVERIFY(there([=] { return audio->isMicrophoneEnabled(); }));
}

void tst_SimulatorFaults::answersWrongly()
{
    auto *information = host<DeviceInformation>();
    there([=] { information->setFault(Fault::wrongAnswer({42, QStringLiteral("text")})); });
    const QDBusMessage get =
        ask(Features.properties(), "Get", {Features.interface, QStringLiteral("isOsCertified")});
    QCOMPARE(get.signature(), QStringLiteral("is"));
    QCOMPARE(get.arguments(), (QVariantList{42, QStringLiteral("text")}));
}

void tst_SimulatorFaults::diesInTheCall()
{
    auto *audio = host<AudioPolicy>();
    there([=] { audio->setFault(Fault::death()); });
    QElapsedTimer timer;
    timer.start();
    const QDBusMessage reply =
        ask(Audio, "Set", {QStringLiteral("microphone"), QStringLiteral("disabled")}, 20000);
    QCOMPARE(reply.errorName(), NoReply);
    // The bus tells of the death at once; the time-out does not come into it.
    QVERIFY(timer.elapsed() < 10000);
    QVERIFY(!there([=] { return audio->isPresent(); }));
    there([=] { audio->clearFaults(); });
    QVERIFY(there([=] { return audio->appear(); }));
    QCOMPARE(ask(Audio, "Set", {QStringLiteral("microphone"), QStringLiteral("disabled")}).type(),
             QDBusMessage::ReplyMessage);
}

void tst_SimulatorFaults::forgetsLateAnswersWhenItLeaves()
{
    auto *audio = host<AudioPolicy>();
    there([=] { audio->setFault(Fault::late(100)); });
    QDBusPendingCallWatcher watcher(QDBusConnection::systemBus().asyncCall(methodCall(
        Audio, QStringLiteral("Set"), {QStringLiteral("microphone"), QStringLiteral("enabled")})));
    QTRY_COMPARE(there([=] { return audio->calls().size(); }), 1);
    there([=] {
        audio->leave();
        audio->clearFaults();
    });
    QTRY_VERIFY(watcher.isFinished());
    QCOMPARE(watcher.error().name(), NoReply);
    QTRY_VERIFY(there([=] { return audio->appear(); }));
}

void tst_SimulatorFaults::sendsAnySignal()
{
    auto *audio = host<AudioPolicy>();
    m_received.clear();
    QVERIFY(QDBusConnection::systemBus().connect(Audio.service, Audio.path, Audio.interface,
                                                 QStringLiteral("Told"), this,
                                                 SLOT(receive(QDBusMessage))));
    there([=] {
        audio->sendSignal(Audio.path, Audio.interface, QStringLiteral("Told"), {42});
        audio->leave();
        audio->sendSignal(Audio.path, Audio.interface, QStringLiteral("Told"), {43});
    });
    QTRY_COMPARE(m_received.size(), 1);
    QCOMPARE(m_received.at(0).arguments(), QVariantList{42});
}

void tst_SimulatorFaults::servesItsOwnThread()
{
    // A caller that does not block can share its thread with the service.
    AudioPolicy audio;
    QVERIFY(audio.appear());
    QSignalSpy changed(&audio, &Service::changed);
    QDBusPendingCallWatcher watcher(QDBusConnection::systemBus().asyncCall(methodCall(
        Audio, QStringLiteral("Set"), {QStringLiteral("microphone"), QStringLiteral("disabled")})));
    QTRY_VERIFY(watcher.isFinished());
    QVERIFY(!watcher.isError());
    QCOMPARE(changed.count(), 1);
    QVERIFY(!audio.isMicrophoneEnabled());
}

QTEST_GUILESS_MAIN(tst_SimulatorFaults)
#include "tst_simulatorfaults.moc"
