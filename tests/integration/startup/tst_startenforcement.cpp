// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbours.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include "simulator/applicationsandbox.h"
#include "simulator/audiopolicy.h"
#include "simulator/developermode.h"
#include "simulator/devicesentry.h"
#include "simulator/networktechnology.h"
#include "simulator/runtimemanager.h"
#include "simulator/systemlogs.h"
#include "simulator/usbmodes.h"

#include <QtTest>

#include <algorithm>
#include <functional>

using namespace Support;

namespace {

const QString Sandbox = QStringLiteral("org.pelloraos.appjaild1");

/// The neighbours of which no two serve the same policy, except a direct one and then a watched
/// one: so the order of their calls is the order of the policies.
void addOrderedOnes(Neighbours &neighbours)
{
    neighbours.add<Simulator::ApplicationSandbox>();
    neighbours.add<Simulator::DeviceSentry>();
    neighbours.add<Simulator::NetworkTechnology>();
    neighbours.add<Simulator::RuntimeManager>();
}

/// Every policy forbidden, in an order of its own.
QByteArray allForbidden()
{
    QByteArray content = "[policy]\n";
    const char *keys[] = {"UsbDevicesEnabled",
                          "DeveloperModeEnabled",
                          "UserReportExportEnabled",
                          "MessagesEnabled",
                          "VoiceCallsEnabled",
                          "BrowserEnabled",
                          "MicrophoneEnabled",
                          "UsbMediaTransferEnabled",
                          "UsbDeveloperModeEnabled",
                          "InternetSharingEnabled",
                          "CameraEnabled"};
    for (const char *key : keys)
        content += QByteArray(key) + "=false\n";
    return content;
}

const QString CertificateQuestion =
    QStringLiteral("Get(org.kvt.deviceinfo.Features,isOsCertified)");

/// What the neighbours of addOrderedOnes() are asked for by one pass over allowed policies.
QStringList allowedPass()
{
    return texts({"RemoveFromGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
                  "RemoveFromGlobalDenylist([])",
                  "RemoveFromGlobalDenylist([org.kvt.browserstandalone,org.kvt.browserpwa])",
                  "RemoveFromGlobalDenylist([voicecall-ui])",
                  "RemoveFromGlobalDenylist([org.kvt.messages])", "AddToGlobalDenylist([])",
                  "Set(org.brinos.DeviceSentry1.UsbManager,Enabled,true)"});
}

/// The same for forbidden ones.
QStringList forbiddenPass()
{
    return texts({"AddToGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
                  "SetProperty(Tethering,false)", "AddToGlobalDenylist([])",
                  "Terminate(org.kvt.browserstandalone)", "Terminate(org.kvt.browserpwa)",
                  "AddToGlobalDenylist([org.kvt.browserstandalone,org.kvt.browserpwa])",
                  "AddToGlobalDenylist([voicecall-ui])", "Terminate(org.kvt.messages)",
                  "AddToGlobalDenylist([org.kvt.messages])", "AddToGlobalDenylist([])",
                  "SetRemoteConnectionEnabled(false)", // the attempt that is always made
                  "Set(org.brinos.DeviceSentry1.UsbManager,Enabled,false)"});
}

} // namespace

/// The two passes of enforcement at start: each value as it is stored, then all by their numbers.
class TestStartEnforcement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void neighboursAreLookedForBeforeAnyPolicy();
    void defaultsAreEnforcedTwiceInOrder();
    void configuredValuesAreEnforcedTwiceInOrder();
    void filesGoBeforeDefaultsInTheFirstPass();
    void everyServiceGetsBothPasses_data();
    void everyServiceGetsBothPasses();
    void servicesThatAppearLaterGetBothPasses();
    void policyThatIsOffByASwitchIsEnforcedAsOff();
    void lockedPolicyIsEnforcedOnceAsOff();
    void startNeitherAsksForNorRefusesCallers();
};

void TestStartEnforcement::init()
{
    Files::reset();
}

void TestStartEnforcement::neighboursAreLookedForBeforeAnyPolicy()
{
    Neighbours neighbours;
    neighbours.add<Simulator::SystemLogs>();
    neighbours.add<Simulator::ApplicationSandbox>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    const QString own = neighbours.monitor().uniqueName(QStringLiteral("org.kvt.PolicyManager"));
    const auto asks = neighbours.monitor().messages([&](const BusMessage &message) {
        return message.type == BusMessage::Call && message.sender == own;
    });
    const auto place = [&](const std::function<bool(const BusMessage &)> &condition) {
        return std::distance(asks.begin(), std::find_if(asks.begin(), asks.end(), condition));
    };
    const auto log = place([](const BusMessage &message) {
        return message.isCallOf(QStringLiteral("GetNameOwner"))
            && message.arguments.value(0) == QLatin1String("org.kvtlabs.SystemLogs");
    });
    // Whoever appears after the list was made is announced.
    const auto watch = place([](const BusMessage &message) {
        return message.isCallOf(QStringLiteral("AddMatch"))
            && message.arguments.value(0).toString().contains(
                QLatin1String("member='NameOwnerChanged'"))
            && !message.arguments.value(0).toString().contains(QLatin1String("arg0="));
    });
    const auto list = place(
        [](const BusMessage &message) { return message.isCallOf(QStringLiteral("ListNames")); });
    const auto enforcement = place([](const BusMessage &message) {
        return message.isCallOf(QStringLiteral("RemoveFromGlobalDenylist"));
    });
    QVERIFY(log < watch && watch < list && list < enforcement);
    QVERIFY(enforcement < asks.size());
}

void TestStartEnforcement::defaultsAreEnforcedTwiceInOrder()
{
    Neighbours neighbours;
    addOrderedOnes(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QStringList firstPass = allowedPass();
    firstPass.insert(5, CertificateQuestion); // asked when user reports get their default
    QCOMPARE(neighbours.calls(), firstPass + allowedPass());
    QCOMPARE(daemon.log(), QStringList());
}

void TestStartEnforcement::configuredValuesAreEnforcedTwiceInOrder()
{
    // The order in the file does not matter: its reader goes through the platform's policies.
    Files::write(PolicyFile, allForbidden());
    Neighbours neighbours;
    addOrderedOnes(neighbours);
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(), forbiddenPass() + forbiddenPass());
}

void TestStartEnforcement::filesGoBeforeDefaultsInTheFirstPass()
{
    Files::write(PolicyFile, "[policy]\nVoiceCallsEnabled=false\nUserReportExportEnabled=true\n");
    Neighbours neighbours;
    neighbours.add<Simulator::ApplicationSandbox>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    const QStringList calls = neighbours.calls(Sandbox);
    QCOMPARE(
        calls,
        texts({"AddToGlobalDenylist([voicecall-ui])", "RemoveFromGlobalDenylist([])",
               "RemoveFromGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
               "RemoveFromGlobalDenylist([])",
               "RemoveFromGlobalDenylist([org.kvt.browserstandalone,org.kvt.browserpwa])",
               "RemoveFromGlobalDenylist([org.kvt.messages])",
               "RemoveFromGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
               "RemoveFromGlobalDenylist([])",
               "RemoveFromGlobalDenylist([org.kvt.browserstandalone,org.kvt.browserpwa])",
               "AddToGlobalDenylist([voicecall-ui])",
               "RemoveFromGlobalDenylist([org.kvt.messages])", "RemoveFromGlobalDenylist([])"}));
}

void TestStartEnforcement::everyServiceGetsBothPasses_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<QStringList>("calls");
    // Developer mode is cut at once and once more as the service's own task, in both passes.
    const QString cut = QStringLiteral("SetRemoteConnectionEnabled(false)");
    const QString mute = QStringLiteral("Set(microphone,disabled)");
    const QStringList modes =
        texts({"set_whitelisted(developer_mode,false)", "set_whitelisted(mtp_mode,false)",
               "set_whitelisted(developer_mode,false)"});
    QTest::newRow("developer mode")
        << QStringLiteral("org.kvt.developermode") << QStringList{cut, cut, cut, cut};
    QTest::newRow("audio policy") << QStringLiteral("org.freedesktop.ohm.mdm")
                                  << QStringList{mute, mute};
    QTest::newRow("USB modes") << QStringLiteral("com.meego.usb_moded")
                               << texts({"set_whitelisted_modes()"}) + modes + modes;
}

void TestStartEnforcement::everyServiceGetsBothPasses()
{
    QFETCH(const QString, service);
    QFETCH(const QStringList, calls);
    Files::write(PolicyFile, allForbidden());
    Neighbours neighbours;
    neighbours.add<Simulator::DeveloperMode>();
    neighbours.add<Simulator::AudioPolicy>();
    neighbours.add<Simulator::UsbModes>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(service), calls);
}

void TestStartEnforcement::servicesThatAppearLaterGetBothPasses()
{
    Files::write(PolicyFile, "[policy]\nInternetSharingEnabled=false\n");
    Neighbours neighbours;
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(QStringLiteral("net.connman")), QStringList());
    neighbours.add<Simulator::NetworkTechnology>();
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(QStringLiteral("net.connman")),
             texts({"SetProperty(Tethering,false)", "SetProperty(Tethering,false)"}));
}

void TestStartEnforcement::policyThatIsOffByASwitchIsEnforcedAsOff()
{
    Files::write(PolicyFile, "[policy]\nUsbDevicesEnabled=true\n");
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("port"), {45}, false);
    Neighbours neighbours;
    neighbours.add<Simulator::DeviceSentry>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    const QString off = QStringLiteral("Set(org.brinos.DeviceSentry1.UsbManager,Enabled,false)");
    QCOMPARE(neighbours.calls(QStringLiteral("org.brinos.DeviceSentry1")), QStringList({off, off}));
    QCOMPARE(Files::values(PolicyFile).value(QStringLiteral("UsbDevicesEnabled")),
             QStringLiteral("true"));
}

void TestStartEnforcement::lockedPolicyIsEnforcedOnceAsOff()
{
    const QString key = QStringLiteral("UsbDevicesEnabled");
    Files::write(PolicyFile, "[policy]\nUsbDevicesEnabled=true\n");
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {key});
    lock.setLocked({key});
    Neighbours neighbours;
    neighbours.add<Simulator::DeviceSentry>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(QStringLiteral("org.brinos.DeviceSentry1")),
             texts({"Set(org.brinos.DeviceSentry1.UsbManager,Enabled,false)"}));
}

void TestStartEnforcement::startNeitherAsksForNorRefusesCallers()
{
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    monitor.settle();
    const QString own = monitor.uniqueName(QStringLiteral("org.kvt.PolicyManager"));
    QVERIFY(!own.isEmpty());
    QCOMPARE(monitor.calls(QStringLiteral("GetConnectionUnixProcessID"), own).size(), 0);
    QCOMPARE(monitor.calls(QStringLiteral("GetConnectionUnixUser"), own).size(), 0);
    QVERIFY(daemon.log().filter(QStringLiteral("Failed to enforce")).isEmpty());
}

QTEST_GUILESS_MAIN(TestStartEnforcement)
#include "tst_startenforcement.moc"
