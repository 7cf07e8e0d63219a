// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/blockedsystemlog.h"
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include "simulator/devicesentry.h"
#include "simulator/usbmodes.h"

#include <QtTest>

using namespace Support;

/// The order in which one write has its effects.
class TestWriteOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void effectsComeInOrderOnTheBus();
    void fileIsWrittenBeforeTheSystemLogAndThatBeforeAllElse();
    void valueIsStoredBeforeItIsEnforced();
    void callerThatGoesBetweenTheChecksLeavesTheValueUnenforced_data();
    void callerThatGoesBetweenTheChecksLeavesTheValueUnenforced();
};

void TestWriteOrder::effectsComeInOrderOnTheBus()
{
    Simulator::DeviceSentry sentry;
    QVERIFY(sentry.appear());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.set(UsbDevices, false), QVariant(true));

    QCOMPARE(daemon.said(),
             QStringList({daemon.event(UsbDevices, Yes, No),
                          QStringLiteral(
                              R"(call Set "org.brinos.DeviceSentry1.UsbManager" "Enabled" false)"),
                          daemon.announcement(UsbDevices, false), ReplyTrue}));
}

void TestWriteOrder::fileIsWrittenBeforeTheSystemLogAndThatBeforeAllElse()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    BlockedSystemLog log;
    Caller caller;
    caller.send(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {Camera, QVariant::fromValue(QDBusVariant(false))});

    QVERIFY(log.waitForWriter(daemon.process().processId()));
    QCOMPARE(Files::values(PolicyFile).value(Camera), No);
    daemon.monitor().settleBus();
    QCOMPARE(daemon.monitor().calls(QStringLiteral("sendEventStringAlt")).size(), 0);
    QCOMPARE(daemon.monitor().announcements(QStringLiteral("PolicyChanged")).size(), 0);
    QVERIFY(QFile::exists(CameraMarker)); // not enforced yet

    QVERIFY(log.take().contains("Policy CameraEnabled changed. Old value true. New value false."));
    QCOMPARE(caller.reply().value(), QVariant(true));
    QVERIFY(!QFile::exists(CameraMarker));
    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(Camera, Yes, No), daemon.announcement(Camera, false), ReplyTrue}));
}

void TestWriteOrder::valueIsStoredBeforeItIsEnforced()
{
    // The service is given all policies anew in each run for as long as it refuses them.
    Simulator::UsbModes modes;
    modes.setFault(QStringLiteral("set_whitelisted_modes"), Simulator::Fault::error());
    QVERIFY(modes.appear());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    modes.forgetCalls();

    QCOMPARE(daemon.set(QStringLiteral("UsbMediaTransferEnabled"), false), QVariant(true));

    const auto calls = modes.calls(QStringLiteral("set_whitelisted_modes"));
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().arguments,
             QVariantList({QStringLiteral("developer_mode,developer_mode")}));
}

void TestWriteOrder::callerThatGoesBetweenTheChecksLeavesTheValueUnenforced_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("allowed") << true;
    QTest::newRow("forbidden") << false;
}

void TestWriteOrder::callerThatGoesBetweenTheChecksLeavesTheValueUnenforced()
{
    QFETCH(bool, value);
    const QString text = value ? Yes : No;
    Files::write(PolicyFile, value ? "[policy]\nCameraEnabled=false\n" : "");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    BlockedSystemLog log;
    Caller caller;
    caller.send(QStringLiteral("Policy"), QStringLiteral("SetKeyValue"),
                {Camera, QVariant::fromValue(QDBusVariant(value))});
    QVERIFY(log.waitForWriter(daemon.process().processId()));
    caller.vanish();
    log.take();

    QVERIFY(daemon.process().waitForLog(QStringLiteral("Failed to enforce policy:")));
    const QString warning =
        QStringLiteral(R"(warning|default|Failed to enforce policy: "CameraEnabled" = )") + text;
    QCOMPARE(daemon.logged(), QStringList(warning));
    QCOMPARE(QFile::exists(CameraMarker), !value);
    // All else has happened.
    QCOMPARE(daemon.said().filter(QStringLiteral("PolicyChanged")),
             QStringList(daemon.announcement(Camera, value)));
    QCOMPARE(daemon.policy(Camera), QVariant(value));
    QCOMPARE(Files::values(PolicyFile).value(Camera), text);
}

QTEST_GUILESS_MAIN(TestWriteOrder)
#include "tst_writeorder.moc"
