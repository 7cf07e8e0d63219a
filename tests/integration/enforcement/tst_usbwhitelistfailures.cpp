// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/usbmodes.h"
#include "support/enforcement.h"
#include "support/files.h"
#include "support/neighbour.h"

#include <QTest>

using Simulator::Fault;
using Support::Enforcement;
using Support::Oddity;

namespace {

const QString UsbDeveloperMode = QStringLiteral("UsbDeveloperModeEnabled");
const QString UsbMediaTransfer = QStringLiteral("UsbMediaTransferEnabled");
const QString Target =
    QStringLiteral("com.meego.usb_moded /com/meego/usb_moded com.meego.usb_moded");

QString setAll(const QString &modes)
{
    return Enforcement::callText(Target, QStringLiteral("set_whitelisted_modes"),
                                 QStringLiteral("s"), {modes});
}

QString setMode(const char *mode, bool isAllowed)
{
    return Enforcement::callText(Target, QStringLiteral("set_whitelisted"), QStringLiteral("sb"),
                                 {QString::fromLatin1(mode), isAllowed});
}

void writePolicies(bool usbDeveloperMode, bool usbMediaTransfer, bool developerMode)
{
    const auto text = [](bool value) {
        return value ? "true\n" : "false\n";
    };
    Support::Files::write(QStringLiteral("/etc/policy/policy.conf"),
                          QByteArray("[policy]\nUsbDeveloperModeEnabled=") + text(usbDeveloperMode)
                              + "UsbMediaTransferEnabled=" + text(usbMediaTransfer)
                              + "DeveloperModeEnabled=" + text(developerMode));
}

/// The modes of the one whitelist that was sent; the order among them is not settled.
QStringList sentModes(Enforcement &device)
{
    device.monitor().settle();
    const auto calls = device.monitor().calls(QStringLiteral("set_whitelisted_modes"));
    if (calls.size() != 1)
        return {QStringLiteral("%1 whitelists").arg(calls.size())};
    QStringList modes = calls.at(0).arguments.value(0).toString().split(QLatin1Char(','));
    modes.sort();
    return modes;
}

QString whitelistFailure(const QString &error)
{
    return QStringLiteral("warning|default|Failed to update USB mode whitelist \"%1\"").arg(error);
}

QString modeFailure(const QString &mode, const QString &error)
{
    return QStringLiteral("warning|default|Failed to enable USB mode \"%1\" \"%2\"")
        .arg(mode, error);
}

} // namespace

class TestUsbWhitelistFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whitelistIsSentAgainAfterAFailure();
    void deathInTheWhitelistIsAFailure();
    void oddAnswerIsSuccess_data();
    void oddAnswerIsSuccess();
    void absentServiceOfAnUnsentWhitelistFailsTwice();
};

/// Each run tries until the service has taken the list, and goes on with its own mode all the
/// same.
void TestUsbWhitelistFailures::whitelistIsSentAgainAfterAFailure()
{
    Support::Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"),
                 Fault::error(QStringLiteral("org.example.Refused")));
    Enforcement device;
    writePolicies(false, true, false);
    QVERIFY(device.start());
    device.forget();
    const QString all = setAll(QStringLiteral("mtp_mode"));

    service.appear();
    const QStringList once{all, setMode("developer_mode", false), all, setMode("mtp_mode", true),
                           all, setMode("developer_mode", false)};
    QCOMPARE(device.calls(), once + once);
    const QString failure = whitelistFailure(QStringLiteral("org.example.Refused"));
    QCOMPARE(device.log(), QStringList({failure, failure, failure, failure, failure, failure}));

    device.forget();
    service.mend();
    QVERIFY(device.change(UsbDeveloperMode, true));
    QVERIFY(device.change(UsbMediaTransfer, false));
    QCOMPARE(sentModes(device),
             QStringList({QStringLiteral("developer_mode"), QStringLiteral("mtp_mode")}));
    QCOMPARE(device.calls().mid(1),
             QStringList({setMode("developer_mode", true), setMode("mtp_mode", false)}));
    QCOMPARE(device.log(), QStringList());
}

void TestUsbWhitelistFailures::deathInTheWhitelistIsAFailure()
{
    Support::Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"), Fault::death());
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    service.appear();

    const QString noReply = QStringLiteral("org.freedesktop.DBus.Error.NoReply");
    const QString unknown = QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown");
    const QStringList log = device.log();
    QCOMPARE(log.value(0), whitelistFailure(noReply));
    QCOMPARE(log.value(1), modeFailure(QStringLiteral("developer_mode"), unknown));
    QCOMPARE(log.value(2), whitelistFailure(unknown));
    QCOMPARE(log.value(3), modeFailure(QStringLiteral("mtp_mode"), unknown));
    QCOMPARE(log.size(), 12);
}

void TestUsbWhitelistFailures::oddAnswerIsSuccess_data()
{
    Oddity::addRows();
}

void TestUsbWhitelistFailures::oddAnswerIsSuccess()
{
    QFETCH(Oddity, oddity);
    Support::Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"), oddity.fault);
    Enforcement device;
    writePolicies(false, true, false);
    QVERIFY(device.start());
    device.forget();

    service.appear();

    QCOMPARE(sentModes(device), QStringList(QStringLiteral("mtp_mode")));
    QCOMPARE(device.log(), QStringList());
}

/// Seen once, the service is sent its tasks although it has left.
void TestUsbWhitelistFailures::absentServiceOfAnUnsentWhitelistFailsTwice()
{
    Support::Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"), Fault::error());
    service.appear();
    Enforcement device;
    QVERIFY(device.start());
    service.leave();
    device.forget();

    QVERIFY(device.change(UsbMediaTransfer, false));

    const QString unknown = QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown");
    QCOMPARE(device.log(),
             QStringList({whitelistFailure(unknown),
                          QStringLiteral("warning|default|Failed to disable USB mode \"mtp_mode\""
                                         " \"org.freedesktop.DBus.Error.ServiceUnknown\"")}));
    const QString developer = QStringLiteral("developer_mode");
    QCOMPARE(sentModes(device), QStringList({developer, developer}));
}

QTEST_GUILESS_MAIN(TestUsbWhitelistFailures)
#include "tst_usbwhitelistfailures.moc"
