// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/audiopolicy.h"
#include "support/caller.h"
#include "support/enforcement.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbour.h"

#include <QTest>

using Support::Caller;
using Support::Enforcement;
using Support::LockPlugin;
using Support::Reply;

namespace {

const QString Camera = QStringLiteral("CameraEnabled");
const QString Microphone = QStringLiteral("MicrophoneEnabled");
const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
const QString CameraMarker = QStringLiteral("/var/lib/govd/camera_enabled");

} // namespace

/// Policies that are locked from the beginning, so that none of their values is ever taken.
class TestLocksAtStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void policyLockedSinceStartHasNoValue();
    void policyLockedSinceStartIsEnforcedAsOff();
    void storedValueOfALockedPolicyIsNotTouchedAtStart();
};

/// The default was refused like any other change, so there is nothing to read: no reply comes.
void TestLocksAtStart::policyLockedSinceStartHasNoValue()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    plugin.setLocked({Camera});
    Enforcement device;
    QVERIFY(device.start());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QVERIFY(!Support::Files::values(PolicyFile).contains(Camera));

    plugin.setLocked({});
    device.forget();
    Caller caller;
    caller.setTimeout(500);
    const Reply reply = caller.call(QStringLiteral("Policy"), QStringLiteral("KeyValue"), {Camera});

    QCOMPARE(reply.errorName, QStringLiteral("org.freedesktop.DBus.Error.NoReply"));
    device.monitor().settle();
    const auto question = device.monitor().calls(QStringLiteral("KeyValue"));
    QCOMPARE(question.size(), 1);
    const auto answers = device.monitor().messages(
        [&](const Support::BusMessage &message) { return message.answers(question.at(0)); });
    QCOMPARE(answers.size(), 0);

    QVERIFY(device.change(Camera, true));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestLocksAtStart::policyLockedSinceStartIsEnforcedAsOff()
{
    Support::Neighbour<Simulator::AudioPolicy> audio;
    audio.appear();
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera, Microphone});
    plugin.setLocked({Camera, Microphone});
    Enforcement device;
    Support::Files::write(CameraMarker, "");
    Support::Files::write(PolicyFile, "[policy]\nMicrophoneEnabled=true\n");
    QVERIFY(device.start());

    QVERIFY(!Support::Files::snapshot(CameraMarker).exists);
    // Not for the stored value, which was refused, but once in the set-up.
    const QStringList calls = device.calls(QStringLiteral("org.freedesktop.ohm.mdm"));
    QCOMPARE(calls.size(), 1);
    QVERIFY(calls.at(0).endsWith(QStringLiteral("[\"microphone\",\"disabled\"]")));
}

void TestLocksAtStart::storedValueOfALockedPolicyIsNotTouchedAtStart()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera, Microphone});
    plugin.setLocked({Camera, Microphone});
    Enforcement device;
    Support::Files::write(PolicyFile, "[policy]\nMicrophoneEnabled=true\n");
    QVERIFY(device.start());

    const QMap<QString, QString> values = Support::Files::values(PolicyFile);
    QCOMPARE(values.value(Microphone), QStringLiteral("true"));
    QVERIFY(!values.contains(Camera));
    QCOMPARE(values.value(QStringLiteral("BrowserEnabled")), QStringLiteral("true"));
    QCOMPARE(device.log().filter(QStringLiteral("Failed to save")), QStringList());
}

QTEST_GUILESS_MAIN(TestLocksAtStart)
#include "tst_locksatstart.moc"
