// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/microphonestates.h"
#include "support/neighbour.h"
#include "support/wording.h"

#include <QTest>

using namespace Support;

namespace {

QString setMicrophone(bool isEnabled)
{
    return Wording::call(
        QStringLiteral("org.freedesktop.ohm.mdm /org/freedesktop/ohm/mdm org.freedesktop.ohm.mdm"),
        QStringLiteral("Set"), QStringLiteral("ss"),
        {QStringLiteral("microphone"), isEnabled ? Enabled : Disabled});
}

} // namespace

class TestMicrophone : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

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
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const auto isEnabled = [](Simulator::AudioPolicy &service) {
        return service.isMicrophoneEnabled();
    };

    QVERIFY(daemon.change(Microphone, false));
    QCOMPARE(daemon.calls(), QStringList(setMicrophone(false)));
    QVERIFY(!audio.ask(isEnabled));

    daemon.forget();
    QVERIFY(daemon.change(Microphone, true));
    QCOMPARE(daemon.calls(), QStringList(setMicrophone(true)));
    QVERIFY(audio.ask(isEnabled));
    QCOMPARE(daemon.logged(), QStringList());
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
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    Files::write(PolicyFile,
                 value ? "[policy]\nMicrophoneEnabled=true\n"
                       : "[policy]\nMicrophoneEnabled=false\n");
    QVERIFY(daemon.startObserved());

    QCOMPARE(daemon.calls(AudioPolicyName),
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
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    if (value)
        QVERIFY(daemon.change(Microphone, false));
    daemon.forget();
    audio.suffer(trouble);

    QVERIFY(daemon.change(Microphone, value));

    QCOMPARE(daemon.calls(), QStringList(setMicrophone(value)));
    const QString line = value
        ? QStringLiteral("warning|default|Failed to enable microphone \"%1\"")
        : QStringLiteral("warning|default|Failed to disable microphone \"%1\"");
    QCOMPARE(daemon.logged(), QStringList(line.arg(trouble.errorName)));
}

void TestMicrophone::oddAnswerIsSuccess_data()
{
    Oddity::addRows();
}

void TestMicrophone::oddAnswerIsSuccess()
{
    QFETCH(Oddity, oddity);
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    audio.fail(oddity.fault);

    QVERIFY(daemon.change(Microphone, false));

    QCOMPARE(daemon.calls(), QStringList(setMicrophone(false)));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestMicrophone::failureIsNoBusinessOfTheCaller()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    audio.fail(Simulator::Fault::error());

    const Reply reply = Caller().setPolicy(Microphone, false);

    QCOMPARE(reply.errorName, QString());
    QCOMPARE(reply.signature, QStringLiteral("b"));
    QCOMPARE(reply.value(), QVariant(true));
    QCOMPARE(Caller().policy(Microphone).value(), QVariant(false));
    QCOMPARE(Files::values(PolicyFile).value(Microphone), QStringLiteral("false"));
    QCOMPARE(daemon.announcements(), QStringList(daemon.announcement(Microphone, false)));
}

/// The daemon waits for the service: when a change is confirmed, it is in force.
void TestMicrophone::replyToTheCallerComesAfterThatOfTheService()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    audio.fail(Simulator::Fault::late(200));

    QVERIFY(daemon.change(Microphone, false));
    daemon.monitor().settle();

    const auto change = daemon.monitor().calls(QStringLiteral("SetKeyValue")).value(0);
    const auto order = daemon.monitor().calls(QStringLiteral("Set")).value(0);
    const auto answers = daemon.monitor().messages([&](const BusMessage &message) {
        return message.answers(change) || message.answers(order);
    });
    QCOMPARE(answers.size(), 2);
    QVERIFY(answers.at(0).answers(order));
    QVERIFY(answers.at(1).answers(change));
}

QTEST_GUILESS_MAIN(TestMicrophone)
#include "tst_microphone.moc"
