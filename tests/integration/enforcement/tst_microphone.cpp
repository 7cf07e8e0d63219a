// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "support/caller.h"
#include "support/enforcement.h"
#include "support/files.h"
#include "support/neighbour.h"

#include <QTest>

using Support::Enforcement;
using Support::Oddity;
using Support::Trouble;

namespace {

const QString Microphone = QStringLiteral("MicrophoneEnabled");
const QString AudioPolicyName = QStringLiteral("org.freedesktop.ohm.mdm");

QString setMicrophone(bool isEnabled)
{
    return Enforcement::callText(
        QStringLiteral("org.freedesktop.ohm.mdm /org/freedesktop/ohm/mdm org.freedesktop.ohm.mdm"),
        QStringLiteral("Set"), QStringLiteral("ss"),
        {QStringLiteral("microphone"),
         isEnabled ? QStringLiteral("enabled") : QStringLiteral("disabled")});
}

} // namespace

class TestMicrophone : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void microphoneFollowsThePolicyBothWays();
    void microphoneIsSetAtStart_data();
    void microphoneIsSetAtStart();
    void failureNamesTheDirectionAndTheError_data();
    void failureNamesTheDirectionAndTheError();
    void oddAnswerIsSuccess_data();
    void oddAnswerIsSuccess();
    void failureIsNoBusinessOfTheCaller();
    void replyToTheCallerComesAfterThatOfTheService();
};

void TestMicrophone::microphoneFollowsThePolicyBothWays()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    const auto isEnabled = [](Simulator::AudioPolicy &service) {
        return service.isMicrophoneEnabled();
    };

    QVERIFY(device.change(Microphone, false));
    QCOMPARE(device.calls(), QStringList(setMicrophone(false)));
    QVERIFY(!audio.ask(isEnabled));

    device.forget();
    QVERIFY(device.change(Microphone, true));
    QCOMPARE(device.calls(), QStringList(setMicrophone(true)));
    QVERIFY(audio.ask(isEnabled));
    QCOMPARE(device.log(), QStringList());
}

void TestMicrophone::microphoneIsSetAtStart_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("allowed") << true;
    QTest::newRow("forbidden") << false;
}

/// Once when the stored value is read and once when all policies are set up.
void TestMicrophone::microphoneIsSetAtStart()
{
    QFETCH(bool, value);
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    Support::Files::write(QStringLiteral("/etc/policy/policy.conf"),
                          value ? "[policy]\nMicrophoneEnabled=true\n"
                                : "[policy]\nMicrophoneEnabled=false\n");
    QVERIFY(device.start());

    QCOMPARE(device.calls(AudioPolicyName),
             QStringList({setMicrophone(value), setMicrophone(value)}));
}

void TestMicrophone::failureNamesTheDirectionAndTheError_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<bool>("value");
    for (const Trouble &trouble : Trouble::of(AudioPolicyName)) {
        for (const bool value : {false, true})
            QTest::newRow(trouble.name + (value ? ", enable" : ", disable")) << trouble << value;
    }
}

void TestMicrophone::failureNamesTheDirectionAndTheError()
{
    QFETCH(Trouble, trouble);
    QFETCH(bool, value);
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());
    if (value)
        QVERIFY(device.change(Microphone, false));
    device.forget();
    audio.suffer(trouble);

    QVERIFY(device.change(Microphone, value));

    QCOMPARE(device.calls(), QStringList(setMicrophone(value)));
    const QString line = value
        ? QStringLiteral("warning|default|Failed to enable microphone \"%1\"")
        : QStringLiteral("warning|default|Failed to disable microphone \"%1\"");
    QCOMPARE(device.log(), QStringList(line.arg(trouble.errorName)));
}

void TestMicrophone::oddAnswerIsSuccess_data()
{
    Oddity::addRows();
}

void TestMicrophone::oddAnswerIsSuccess()
{
    QFETCH(Oddity, oddity);
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    audio.fail(oddity.fault);

    QVERIFY(device.change(Microphone, false));

    QCOMPARE(device.calls(), QStringList(setMicrophone(false)));
    QCOMPARE(device.log(), QStringList());
}

void TestMicrophone::failureIsNoBusinessOfTheCaller()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    audio.fail(Simulator::Fault::error());

    const Support::Reply reply = Support::Caller().setPolicy(Microphone, false);

    QCOMPARE(reply.errorName, QString());
    QCOMPARE(reply.signature, QStringLiteral("b"));
    QCOMPARE(reply.value(), QVariant(true));
    QCOMPARE(Support::Caller().policy(Microphone).value(), QVariant(false));
    QCOMPARE(Support::Files::values(QStringLiteral("/etc/policy/policy.conf")).value(Microphone),
             QStringLiteral("false"));
    QCOMPARE(device.announcements(),
             QStringList(QStringLiteral("PolicyChanged [\"MicrophoneEnabled\",false]")));
}

/// The daemon waits for the service: when a change is confirmed, it is in force.
void TestMicrophone::replyToTheCallerComesAfterThatOfTheService()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    audio.fail(Simulator::Fault::late(200));

    QVERIFY(device.change(Microphone, false));
    device.monitor().settle();

    const auto change = device.monitor().calls(QStringLiteral("SetKeyValue")).value(0);
    const auto order = device.monitor().calls(QStringLiteral("Set")).value(0);
    const auto answers = device.monitor().messages([&](const Support::BusMessage &message) {
        return message.answers(change) || message.answers(order);
    });
    QCOMPARE(answers.size(), 2);
    QVERIFY(answers.at(0).answers(order));
    QVERIFY(answers.at(1).answers(change));
}

QTEST_GUILESS_MAIN(TestMicrophone)
#include "tst_microphone.moc"
