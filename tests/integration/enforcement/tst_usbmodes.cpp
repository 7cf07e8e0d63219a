// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/developermode.h"
#include "simulator/usbmodes.h"
#include "support/enforcement.h"
#include "support/neighbour.h"

#include <QTest>

using Simulator::Fault;
using Support::Enforcement;
using Support::Oddity;
using Support::Trouble;

namespace {

const QString UsbDeveloperMode = QStringLiteral("UsbDeveloperModeEnabled");
const QString UsbMediaTransfer = QStringLiteral("UsbMediaTransferEnabled");
const QString DeveloperMode = QStringLiteral("DeveloperModeEnabled");
const QString UsbModesName = QStringLiteral("com.meego.usb_moded");

const QString SetAll = QStringLiteral("set_whitelisted_modes");
const QString SetOne = QStringLiteral("set_whitelisted");

QString setMode(const QString &mode, bool isAllowed)
{
    return Enforcement::callText(
        QStringLiteral("com.meego.usb_moded /com/meego/usb_moded com.meego.usb_moded"), SetOne,
        QStringLiteral("sb"), {mode, isAllowed});
}

/// The texts of the whole whitelists that were sent.
QStringList whitelists(Enforcement &device)
{
    device.monitor().settle();
    QStringList texts;
    for (const Support::BusMessage &call : device.monitor().calls(SetAll))
        texts.append(call.arguments.value(0).toString());
    return texts;
}

void addModeRows()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("mode");
    QTest::newRow("13") << UsbDeveloperMode << QStringLiteral("developer_mode");
    QTest::newRow("14") << UsbMediaTransfer << QStringLiteral("mtp_mode");
    QTest::newRow("42") << DeveloperMode << QStringLiteral("developer_mode");
}

} // namespace

/// The single modes. Those that a person may choose from as a whole are in tst_usbwhitelist.
class TestUsbModes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void modeFollowsThePolicyBothWays_data();
    void modeFollowsThePolicyBothWays();
    void lastChangeDecidesAboutASharedMode();
    void failureNamesTheDirectionTheModeAndTheError_data();
    void failureNamesTheDirectionTheModeAndTheError();
    void oddAnswerIsSuccess_data();
    void oddAnswerIsSuccess();
    void failedModeDoesNotSendTheWhitelistAgain();
    void developerModeReachesBothItsServices();
};

void TestUsbModes::modeFollowsThePolicyBothWays_data()
{
    addModeRows();
}

void TestUsbModes::modeFollowsThePolicyBothWays()
{
    QFETCH(QString, key);
    QFETCH(QString, mode);
    Support::Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(key, false));
    QCOMPARE(device.calls(UsbModesName), QStringList(setMode(mode, false)));

    device.forget();
    QVERIFY(device.change(key, true));
    QCOMPARE(device.calls(UsbModesName), QStringList(setMode(mode, true)));
    QCOMPARE(device.log(), QStringList());
}

/// Forbidden by one policy, the mode is off although the other one allows it, and the other way
/// round.
void TestUsbModes::lastChangeDecidesAboutASharedMode()
{
    Support::Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    Enforcement device;
    QVERIFY(device.start());
    const auto whitelisted = [](Simulator::UsbModes &service) {
        return service.whitelistedModes().contains(QStringLiteral("developer_mode"));
    };

    device.forget();
    QVERIFY(device.change(DeveloperMode, false));
    QCOMPARE(device.calls(UsbModesName),
             QStringList(setMode(QStringLiteral("developer_mode"), false)));
    QVERIFY(!modes.ask(whitelisted));

    QVERIFY(device.change(UsbDeveloperMode, false));
    device.forget();
    QVERIFY(device.change(UsbDeveloperMode, true));
    QCOMPARE(device.calls(UsbModesName),
             QStringList(setMode(QStringLiteral("developer_mode"), true)));
    QVERIFY(modes.ask(whitelisted));
}

void TestUsbModes::failureNamesTheDirectionTheModeAndTheError_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<bool>("value");
    const QStringList keys{UsbDeveloperMode, UsbMediaTransfer};
    for (const Trouble &trouble : Trouble::of(UsbModesName)) {
        for (const QString &key : keys) {
            const bool isMedia = key == UsbMediaTransfer;
            const QString mode =
                isMedia ? QStringLiteral("mtp_mode") : QStringLiteral("developer_mode");
            for (const bool value : {false, true})
                QTest::newRow(trouble.name + (isMedia ? ", 14" : ", 13")
                              + (value ? ", enable" : ", disable"))
                    << trouble << key << mode << value;
        }
    }
}

void TestUsbModes::failureNamesTheDirectionTheModeAndTheError()
{
    QFETCH(Trouble, trouble);
    QFETCH(QString, key);
    QFETCH(QString, mode);
    QFETCH(bool, value);
    Support::Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    Enforcement device;
    QVERIFY(device.start());
    if (value)
        QVERIFY(device.change(key, false));
    device.forget();
    modes.suffer(trouble);

    QVERIFY(device.change(key, value));

    QCOMPARE(device.calls(UsbModesName), QStringList(setMode(mode, value)));
    const QString line = value
        ? QStringLiteral("warning|default|Failed to enable USB mode \"%1\" \"%2\"")
        : QStringLiteral("warning|default|Failed to disable USB mode \"%1\" \"%2\"");
    QCOMPARE(device.log(), QStringList(line.arg(mode, trouble.errorName)));
}

void TestUsbModes::oddAnswerIsSuccess_data()
{
    Oddity::addRows();
}

void TestUsbModes::oddAnswerIsSuccess()
{
    QFETCH(Oddity, oddity);
    Support::Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    modes.fail(oddity.fault);

    QVERIFY(device.change(UsbMediaTransfer, false));

    QCOMPARE(device.calls(UsbModesName), QStringList(setMode(QStringLiteral("mtp_mode"), false)));
    QCOMPARE(device.log(), QStringList());
}

void TestUsbModes::failedModeDoesNotSendTheWhitelistAgain()
{
    Support::Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    Enforcement device;
    QVERIFY(device.start());
    QCOMPARE(whitelists(device).size(), 1);
    device.forget();
    modes.fail(SetOne, Fault::error());
    QVERIFY(device.change(UsbMediaTransfer, false));
    modes.mend();

    QVERIFY(device.change(UsbMediaTransfer, true));

    QCOMPARE(whitelists(device), QStringList());
}

/// The developer-mode service hears of it on both routes, the USB modes on one, and the direct
/// call is the first of all.
void TestUsbModes::developerModeReachesBothItsServices()
{
    Support::Neighbour<Simulator::DeveloperMode> developerMode;
    developerMode.appear();
    Support::Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(DeveloperMode, false));

    QStringList calls = device.calls();
    const QString remoteAccess = Enforcement::callText(
        QStringLiteral("org.kvt.developermode / org.kvt.developermode"),
        QStringLiteral("SetRemoteConnectionEnabled"), QStringLiteral("b"), {false});
    QCOMPARE(calls.value(0), remoteAccess);
    calls.sort();
    QCOMPARE(calls,
             QStringList(
                 {setMode(QStringLiteral("developer_mode"), false), remoteAccess, remoteAccess}));
}

QTEST_GUILESS_MAIN(TestUsbModes)
#include "tst_usbmodes.moc"
