// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/devicesentry.h"
#include "support/enforcement.h"
#include "support/neighbour.h"

#include <QTest>

using Support::Enforcement;
using Support::Oddity;
using Support::Trouble;

namespace {

const QString UsbDevices = QStringLiteral("UsbDevicesEnabled");

const QString DeviceSentryName = QStringLiteral("org.brinos.DeviceSentry1");

QString setUsbDevices(bool isEnabled)
{
    return Enforcement::callText(
        QStringLiteral("org.brinos.DeviceSentry1 /org/brinos/DeviceSentry1/Usb"
                       " org.freedesktop.DBus.Properties"),
        QStringLiteral("Set"), QStringLiteral("ssv"),
        {QStringLiteral("org.brinos.DeviceSentry1.UsbManager"), QStringLiteral("Enabled"),
         isEnabled});
}

} // namespace

class TestUsbDevices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void usbDevicesFollowThePolicyBothWays();
    void usbDevicesAreSetAtStart_data();
    void usbDevicesAreSetAtStart();
    void failureForUsbDevicesIsAlwaysToDisableThem_data();
    void failureForUsbDevicesIsAlwaysToDisableThem();
    void oddAnswerForUsbDevicesIsSuccess_data();
    void oddAnswerForUsbDevicesIsSuccess();
};

void TestUsbDevices::usbDevicesFollowThePolicyBothWays()
{
    Support::Neighbour<Simulator::DeviceSentry> sentry;
    sentry.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(UsbDevices, false));
    QCOMPARE(device.calls(), QStringList(setUsbDevices(false)));
    QVERIFY(!sentry.ask([](Simulator::DeviceSentry &service) { return service.isUsbEnabled(); }));

    device.forget();
    QVERIFY(device.change(UsbDevices, true));
    QCOMPARE(device.calls(), QStringList(setUsbDevices(true)));
    QVERIFY(sentry.ask([](Simulator::DeviceSentry &service) { return service.isUsbEnabled(); }));
    QCOMPARE(device.log(), QStringList());
}

void TestUsbDevices::usbDevicesAreSetAtStart_data()
{
    QTest::addColumn<bool>("present");
    QTest::newRow("service present") << true;
    QTest::newRow("service absent") << false;
}

/// Once as the default is stored and once when all policies are set up: the direct route does not
/// care whether anybody listens.
void TestUsbDevices::usbDevicesAreSetAtStart()
{
    QFETCH(bool, present);
    Support::Neighbour<Simulator::DeviceSentry> sentry;
    if (present)
        sentry.appear();
    Enforcement device;
    QVERIFY(device.start());

    QCOMPARE(device.calls(), QStringList({setUsbDevices(true), setUsbDevices(true)}));
    const QString failure =
        QStringLiteral("warning|default|Failed to disable USB devices connection.");
    QCOMPARE(device.log(), present ? QStringList() : QStringList({failure, failure}));

    device.forget();
    sentry.leave();
    sentry.appear();
    QCOMPARE(device.calls(), QStringList());
}

void TestUsbDevices::failureForUsbDevicesIsAlwaysToDisableThem_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<bool>("value");
    for (const Trouble &trouble : Trouble::of(DeviceSentryName)) {
        for (const bool value : {false, true})
            QTest::newRow(trouble.name + (value ? ", enable" : ", disable")) << trouble << value;
    }
}

void TestUsbDevices::failureForUsbDevicesIsAlwaysToDisableThem()
{
    QFETCH(Trouble, trouble);
    QFETCH(bool, value);
    Support::Neighbour<Simulator::DeviceSentry> sentry;
    sentry.appear();
    Enforcement device;
    QVERIFY(device.start());
    if (value)
        QVERIFY(device.change(UsbDevices, false));
    device.forget();
    sentry.suffer(trouble);

    QVERIFY(device.change(UsbDevices, value));

    QCOMPARE(device.calls(), QStringList(setUsbDevices(value)));
    QCOMPARE(
        device.log(),
        QStringList(QStringLiteral("warning|default|Failed to disable USB devices connection.")));
}

void TestUsbDevices::oddAnswerForUsbDevicesIsSuccess_data()
{
    Oddity::addRows();
}

void TestUsbDevices::oddAnswerForUsbDevicesIsSuccess()
{
    QFETCH(Oddity, oddity);
    Support::Neighbour<Simulator::DeviceSentry> sentry;
    sentry.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    sentry.fail(oddity.fault);

    QVERIFY(device.change(UsbDevices, false));

    QCOMPARE(device.calls(), QStringList(setUsbDevices(false)));
    QCOMPARE(device.log(), QStringList());
}

QTEST_GUILESS_MAIN(TestUsbDevices)
#include "tst_usbdevices.moc"
