// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbour.h"
#include "support/watcheddaemon.h"

#include <QTest>

using namespace Support;

/// Policies that are locked from the beginning, so that none of their values is ever taken.
class TestLocksAtStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void policyLockedSinceStartHasNoValue();
    void policyLockedSinceStartIsEnforcedAsOff();
    void storedValueOfALockedPolicyIsNotTouchedAtStart();
    void noPolicyIsNotSetUp();
};

/// The default was refused like any other change, so there is nothing to read: no reply comes.
void TestLocksAtStart::policyLockedSinceStartHasNoValue()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    plugin.setLocked({Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QVERIFY(!Files::values(PolicyFile).contains(Camera));

    plugin.setLocked({});
    daemon.forget();
    Caller caller;
    caller.setTimeout(500);
    const Reply reply = caller.call(QStringLiteral("Policy"), QStringLiteral("KeyValue"), {Camera});

    QCOMPARE(reply.errorName, QStringLiteral("org.freedesktop.DBus.Error.NoReply"));
    daemon.monitor().settle();
    const auto question = daemon.monitor().calls(QStringLiteral("KeyValue"));
    QCOMPARE(question.size(), 1);
    const auto answers = daemon.monitor().messages(
        [&](const BusMessage &message) { return message.answers(question.at(0)); });
    QCOMPARE(answers.size(), 0);

    QVERIFY(daemon.change(Camera, true));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestLocksAtStart::policyLockedSinceStartIsEnforcedAsOff()
{
    Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera, Microphone});
    plugin.setLocked({Camera, Microphone});
    WatchedDaemon daemon;
    Files::write(CameraMarker, "");
    Files::write(PolicyFile, "[policy]\nMicrophoneEnabled=true\n");
    QVERIFY(daemon.startObserved());

    QVERIFY(!Files::snapshot(CameraMarker).exists);
    // Not for the stored value, which was refused, but once in the set-up.
    const QStringList calls = daemon.calls(QStringLiteral("org.freedesktop.ohm.mdm"));
    QCOMPARE(calls.size(), 1);
    QVERIFY(calls.at(0).endsWith(QStringLiteral("[\"microphone\",\"disabled\"]")));
}

void TestLocksAtStart::storedValueOfALockedPolicyIsNotTouchedAtStart()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera, Microphone});
    plugin.setLocked({Camera, Microphone});
    WatchedDaemon daemon;
    Files::write(PolicyFile, "[policy]\nMicrophoneEnabled=true\n");
    QVERIFY(daemon.startObserved());

    const QMap<QString, QString> values = Files::values(PolicyFile);
    QCOMPARE(values.value(Microphone), QStringLiteral("true"));
    QVERIFY(!values.contains(Camera));
    QCOMPARE(values.value(QStringLiteral("BrowserEnabled")), QStringLiteral("true"));
    QCOMPARE(daemon.logged().filter(QStringLiteral("Failed to save")), QStringList());
}

/// Number 0 gets a default like all others, which is its one question, but stands for nothing that
/// could be set up.
void TestLocksAtStart::noPolicyIsNotSetUp()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"),
                      {QStringLiteral("NoPolicy"), Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    const QStringList calls = plugin.calls();
    QCOMPARE(calls.count(QStringLiteral("policyIsLocked NoPolicy")), 1);
    QCOMPARE(calls.count(QStringLiteral("policyIsLocked CameraEnabled")), 2);
}

QTEST_GUILESS_MAIN(TestLocksAtStart)
#include "tst_locksatstart.moc"
