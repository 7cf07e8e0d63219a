// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/watcheddaemon.h"

#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/devicesentry.h"
#include "simulator/networktechnology.h"
#include "simulator/runtimemanager.h"
#include "simulator/usbmodes.h"

#include <QtTest>

using namespace Support;

namespace {

const QString DeveloperMode = QStringLiteral("DeveloperModeEnabled");

// Calls as WatchedDaemon::said() shows them
const QString RemoteOff = QStringLiteral("call SetRemoteConnectionEnabled false");
const QString DeveloperCableOff = QStringLiteral(R"(call set_whitelisted "developer_mode" false)");
const QString AllowCamera = QStringLiteral(
    R"(call RemoveFromGlobalDenylist ["org.kvt.cameralockscreen","org.kvt.camera"])");
const QString AllowNothing = QStringLiteral("call RemoveFromGlobalDenylist []");
const QString AllowBrowsers = QStringLiteral(
    R"(call RemoveFromGlobalDenylist ["org.kvt.browserstandalone","org.kvt.browserpwa"])");
const QString AllowCalls = QStringLiteral(R"(call RemoveFromGlobalDenylist ["voicecall-ui"])");
const QString AllowMessages =
    QStringLiteral(R"(call RemoveFromGlobalDenylist ["org.kvt.messages"])");

/// The calls by which each policy is allowed; the others need none.
QMap<QString, QStringList> callsThatAllow()
{
    return {
        {Camera, {AllowCamera}},
        {QStringLiteral("UsbDeveloperModeEnabled"),
         {QStringLiteral(R"(call set_whitelisted "developer_mode" true)")}},
        {QStringLiteral("UsbMediaTransferEnabled"),
         {QStringLiteral(R"(call set_whitelisted "mtp_mode" true)")}},
        {Microphone, {AllowNothing, QStringLiteral(R"(call Set "microphone" "enabled")")}},
        {QStringLiteral("BrowserEnabled"), {AllowBrowsers}},
        {QStringLiteral("VoiceCallsEnabled"), {AllowCalls}},
        {QStringLiteral("MessagesEnabled"), {AllowMessages}},
        {QStringLiteral("UserReportExportEnabled"), {AllowNothing}},
        {DeveloperMode, {QStringLiteral(R"(call set_whitelisted "developer_mode" true)")}},
        {QStringLiteral("UsbDevicesEnabled"),
         {QStringLiteral(R"(call Set "org.brinos.DeviceSentry1.UsbManager" "Enabled" true)")}},
    };
}

/// The calls by which each policy is forbidden; the others need none.
QMap<QString, QStringList> callsThatForbid()
{
    return {
        {Camera,
         {QStringLiteral(
             R"(call AddToGlobalDenylist ["org.kvt.cameralockscreen","org.kvt.camera"])")}},
        {QStringLiteral("InternetSharingEnabled"),
         {QStringLiteral(R"(call SetProperty "Tethering" false)")}},
        {QStringLiteral("UsbDeveloperModeEnabled"), {DeveloperCableOff}},
        {QStringLiteral("UsbMediaTransferEnabled"),
         {QStringLiteral(R"(call set_whitelisted "mtp_mode" false)")}},
        {Microphone,
         {QStringLiteral("call AddToGlobalDenylist []"),
          QStringLiteral(R"(call Set "microphone" "disabled")")}},
        {QStringLiteral("BrowserEnabled"),
         {QStringLiteral(R"(call Terminate "org.kvt.browserstandalone")"),
          QStringLiteral(R"(call Terminate "org.kvt.browserpwa")"),
          QStringLiteral(
              R"(call AddToGlobalDenylist ["org.kvt.browserstandalone","org.kvt.browserpwa"])")}},
        {QStringLiteral("VoiceCallsEnabled"),
         {QStringLiteral(R"(call AddToGlobalDenylist ["voicecall-ui"])")}},
        {QStringLiteral("MessagesEnabled"),
         {QStringLiteral(R"(call Terminate "org.kvt.messages")"),
          QStringLiteral(R"(call AddToGlobalDenylist ["org.kvt.messages"])")}},
        {QStringLiteral("UserReportExportEnabled"),
         {QStringLiteral("call AddToGlobalDenylist []")}},
        {DeveloperMode, {RemoteOff, RemoteOff, DeveloperCableOff}},
        {QStringLiteral("UsbDevicesEnabled"),
         {QStringLiteral(R"(call Set "org.brinos.DeviceSentry1.UsbManager" "Enabled" false)")}},
    };
}

/// Calls of one policy to services of the service route, the order of which is open.
QStringList sorted(QStringList calls)
{
    const bool isOpen =
        calls.size() > 1 && !calls.first().startsWith(QLatin1String("call Terminate"));
    if (isOpen)
        std::sort(calls.begin(), calls.end());
    return calls;
}

/// The services that the daemon knows, all or none of them there.
class Neighbours
{
public:
    bool appear()
    {
        for (Simulator::Service *service : services())
            if (!service->appear())
                return false;
        for (const char *id :
             {"org.kvt.browserstandalone", "org.kvt.browserpwa", "org.kvt.messages"})
            m_runtime.start(QLatin1String(id));
        return true;
    }

private:
    QVector<Simulator::Service *> services()
    {
        return {&m_sandbox, &m_audio, &m_developer, &m_sentry, &m_network, &m_runtime, &m_usb};
    }

    Simulator::ApplicationSandbox m_sandbox;
    Simulator::AudioPolicy m_audio;
    Simulator::DeveloperMode m_developer;
    Simulator::DeviceSentry m_sentry;
    Simulator::NetworkTechnology m_network;
    Simulator::RuntimeManager m_runtime;
    Simulator::UsbModes m_usb;
};

} // namespace

/// Which policy is handed to whom, and when.
class TestDispatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void everyPolicyReachesItsHandlersOnly_data();
    void everyPolicyReachesItsHandlersOnly();
    void policyWithoutHandlersIsNotTouched();
    void developerModeIsHandledDirectlyFirst();
    void directHandlerNeedsNoService();
    void waitingTasksAreReplayedInOrderOnce();
    void taskWaitsForEachServiceThatNeedsIt();
};

void TestDispatch::everyPolicyReachesItsHandlersOnly_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("allowed") << true;
    QTest::newRow("forbidden") << false;
}

void TestDispatch::everyPolicyReachesItsHandlersOnly()
{
    QFETCH(bool, value);
    const auto expected = value ? callsThatAllow() : callsThatForbid();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QStringList keys = Files::values(PolicyFile).keys();
    QCOMPARE(keys.size(), 46);
    QCOMPARE(daemon.process().stop(), 0);
    QByteArray content("[policy]\n");
    for (const QString &key : keys)
        content += key.toUtf8() + (value ? "=false\n" : "=true\n");
    Files::write(PolicyFile, content);
    Neighbours neighbours;
    QVERIFY(neighbours.appear());
    QVERIFY(daemon.start());

    for (const QString &key : keys) {
        daemon.forget();
        QVERIFY2(daemon.set(key, value) == QVariant(true), qPrintable(key));
        // After the event, before the announcement and the reply.
        const QStringList said = daemon.said();
        const QStringList calls = said.mid(1, said.size() - 3);
        QVERIFY2(said.first().contains(QLatin1String("sendEventStringAlt")), qPrintable(key));
        QVERIFY2(
            said.mid(said.size() - 2)
                == QStringList({daemon.announcement(key, value), QStringLiteral("reply true")}),
            qPrintable(key));
        QVERIFY2(sorted(calls) == sorted(expected.value(key)),
                 qPrintable(key + QLatin1String(": ") + calls.join(QLatin1String("; "))));
        QVERIFY2(daemon.logged().isEmpty(), qPrintable(key));
    }
}

void TestDispatch::policyWithoutHandlersIsNotTouched()
{
    const QString location = QStringLiteral("LocationEnabled");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(location, false), QVariant(true));
    QCOMPARE(daemon.logged(), QStringList());
    daemon.forget();
    Neighbours neighbours;
    QVERIFY(neighbours.appear());
    // Of the tasks that were waiting, none is about it; each service got all of its own twice.
    QCOMPARE(daemon.said().filter(QStringLiteral("GlobalDenylist")).size(), 12);
    QCOMPARE(daemon.said().filter(QStringLiteral("set_whitelisted \"")).size(), 6);
    QCOMPARE(daemon.said().filter(QStringLiteral("set_whitelisted_modes")).size(), 1);
    QCOMPARE(daemon.said().filter(QStringLiteral("\"microphone\"")).size(), 2);
    QCOMPARE(daemon.said().size(), 21);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestDispatch::developerModeIsHandledDirectlyFirst()
{
    Neighbours neighbours;
    QVERIFY(neighbours.appear());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(DeveloperMode, false), QVariant(true));
    const QStringList calls = daemon.said().mid(1, 3);
    QCOMPARE(calls.first(), RemoteOff);
    QCOMPARE(sorted(calls), sorted({RemoteOff, RemoteOff, DeveloperCableOff}));
    QCOMPARE(daemon.said().size(), 6);
}

void TestDispatch::directHandlerNeedsNoService()
{
    // Without a service there is a failure, and at once.
    const QString key = QStringLiteral("UsbDevicesEnabled");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(key, false), QVariant(true));
    QCOMPARE(
        daemon.logged(),
        QStringList(QStringLiteral("warning|default|Failed to disable USB devices connection.")));
    daemon.forget();
    Simulator::DeviceSentry sentry;
    QVERIFY(sentry.appear());
    QCOMPARE(daemon.said(), QStringList()); // nothing was waiting
    QCOMPARE(daemon.set(key, true), QVariant(true));
    QCOMPARE(sentry.calls(QStringLiteral("Set")).size(), 1);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestDispatch::waitingTasksAreReplayedInOrderOnce()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    for (const bool value : {false, true, false})
        QCOMPARE(daemon.set(Camera, value), QVariant(true));
    QCOMPARE(daemon.set(Microphone, false), QVariant(true));
    QCOMPARE(daemon.set(Camera, true), QVariant(true));
    daemon.forget();
    Simulator::ApplicationSandbox sandbox;
    QVERIFY(sandbox.appear());

    const QString forbidCamera = callsThatForbid().value(Camera).first();
    const QString forbidNothing = callsThatForbid().value(Microphone).first();
    // Each policy once when it was stored, all of them again, then the changes.
    const QStringList start{AllowCamera, AllowNothing,  AllowBrowsers,
                            AllowCalls,  AllowMessages, forbidNothing};
    const QStringList changes{forbidCamera, AllowCamera, forbidCamera, forbidNothing, AllowCamera};
    QCOMPARE(daemon.said(), start + start + changes);

    // Whatever happens to the service now, they do not come again.
    sandbox.leave();
    QVERIFY(daemon.bus().waitForNoOwner(sandbox.name()));
    QVERIFY(sandbox.appear());
    QCOMPARE(daemon.said(), start + start + changes);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestDispatch::taskWaitsForEachServiceThatNeedsIt()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(Microphone, false), QVariant(true));
    daemon.forget();
    Simulator::AudioPolicy audio;
    QVERIFY(audio.appear());
    const QString on = callsThatAllow().value(Microphone).last();
    const QString off = callsThatForbid().value(Microphone).last();
    QCOMPARE(daemon.said(), QStringList({on, on, off}));
    daemon.forget();
    Simulator::ApplicationSandbox sandbox;
    QVERIFY(sandbox.appear());
    // The microphone's tasks, of which this service has its own, are among its thirteen.
    QCOMPARE(daemon.said().filter(QStringLiteral("Denylist")).size(), 13);
    QCOMPARE(daemon.said().size(), 13);
}

QTEST_GUILESS_MAIN(TestDispatch)
#include "tst_dispatch.moc"
