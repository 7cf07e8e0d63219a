// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/devicesentry.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/neighbour.h"
#include "support/watcheddaemon.h"
#include "support/wording.h"

#include <QTest>

using namespace Support;

namespace {

const QString DeviceSentryName = QStringLiteral("org.brinos.DeviceSentry1");

QString setUsbDevices(bool isEnabled)
{
    return Wording::call(QStringLiteral("org.brinos.DeviceSentry1 /org/brinos/DeviceSentry1/Usb"
                                        " org.freedesktop.DBus.Properties"),
                         QStringLiteral("Set"), QStringLiteral("ssv"),
                         {QStringLiteral("org.brinos.DeviceSentry1.UsbManager"),
                          QStringLiteral("Enabled"), isEnabled});
}

} // namespace

class TestUsbDevices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

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
    Neighbour<Simulator::DeviceSentry> sentry;
    sentry.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(UsbDevices, false));
    QCOMPARE(daemon.calls(), QStringList(setUsbDevices(false)));
    QVERIFY(!sentry.ask([](Simulator::DeviceSentry &service) { return service.isUsbEnabled(); }));

    daemon.forget();
    QVERIFY(daemon.change(UsbDevices, true));
    QCOMPARE(daemon.calls(), QStringList(setUsbDevices(true)));
    QVERIFY(sentry.ask([](Simulator::DeviceSentry &service) { return service.isUsbEnabled(); }));
    QCOMPARE(daemon.logged(), QStringList());
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
    Neighbour<Simulator::DeviceSentry> sentry;
    if (present)
        sentry.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(daemon.calls(), QStringList({setUsbDevices(true), setUsbDevices(true)}));
    const QString failure =
        QStringLiteral("warning|default|Failed to disable USB devices connection.");
    QCOMPARE(daemon.logged(), present ? QStringList() : QStringList({failure, failure}));

    daemon.forget();
    sentry.leave();
    sentry.appear();
    QCOMPARE(daemon.calls(), QStringList());
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
    Neighbour<Simulator::DeviceSentry> sentry;
    sentry.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    if (value)
        QVERIFY(daemon.change(UsbDevices, false));
    daemon.forget();
    sentry.suffer(trouble);

    QVERIFY(daemon.change(UsbDevices, value));

    QCOMPARE(daemon.calls(), QStringList(setUsbDevices(value)));
    QCOMPARE(
        daemon.logged(),
        QStringList(QStringLiteral("warning|default|Failed to disable USB devices connection.")));
}

void TestUsbDevices::oddAnswerForUsbDevicesIsSuccess_data()
{
    Oddity::addRows();
}

void TestUsbDevices::oddAnswerForUsbDevicesIsSuccess()
{
    QFETCH(Oddity, oddity);
    Neighbour<Simulator::DeviceSentry> sentry;
    sentry.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    sentry.fail(oddity.fault);

    QVERIFY(daemon.change(UsbDevices, false));

    QCOMPARE(daemon.calls(), QStringList(setUsbDevices(false)));
    QCOMPARE(daemon.logged(), QStringList());
}

QTEST_GUILESS_MAIN(TestUsbDevices)
#include "tst_usbdevices.moc"
