// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/usbmodes.h"
#include "support/enforcement.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbour.h"
#include "support/switchplugin.h"

#include <QTest>

using Support::Enforcement;

namespace {

const QString UsbDeveloperMode = QStringLiteral("UsbDeveloperModeEnabled");
const QString UsbMediaTransfer = QStringLiteral("UsbMediaTransferEnabled");
const QString UsbModesName = QStringLiteral("com.meego.usb_moded");
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

} // namespace

class TestUsbWhitelist : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whitelistHoldsTheAllowedModes_data();
    void whitelistHoldsTheAllowedModes();
    void lockedPolicyCountsAsForbidden();
    void policyWithoutItsSwitchCountsAsForbidden();
    void whitelistIsSentOnceAndBeforeTheModes();
    void whitelistAtStartHoldsWhatIsKnownSoFar_data();
    void whitelistAtStartHoldsWhatIsKnownSoFar();
    void restartedServiceGetsNoWhitelist();
};

void TestUsbWhitelist::whitelistHoldsTheAllowedModes_data()
{
    const QString developer = QStringLiteral("developer_mode");
    const QString media = QStringLiteral("mtp_mode");
    QTest::addColumn<bool>("usbDeveloperMode");
    QTest::addColumn<bool>("usbMediaTransfer");
    QTest::addColumn<bool>("developerMode");
    QTest::addColumn<QStringList>("modes");
    QTest::newRow("none") << false << false << false << QStringList(QString());
    QTest::newRow("13") << true << false << false << QStringList(developer);
    QTest::newRow("14") << false << true << false << QStringList(media);
    QTest::newRow("42") << false << false << true << QStringList(developer);
    QTest::newRow("13, 14") << true << true << false << QStringList({developer, media});
    QTest::newRow("13, 42") << true << false << true << QStringList({developer, developer});
    QTest::newRow("14, 42") << false << true << true << QStringList({developer, media});
    QTest::newRow("all") << true << true << true << QStringList({developer, developer, media});
}

void TestUsbWhitelist::whitelistHoldsTheAllowedModes()
{
    QFETCH(bool, usbDeveloperMode);
    QFETCH(bool, usbMediaTransfer);
    QFETCH(bool, developerMode);
    QFETCH(QStringList, modes);
    Support::Neighbour<Simulator::UsbModes> service;
    Enforcement device;
    writePolicies(usbDeveloperMode, usbMediaTransfer, developerMode);
    QVERIFY(device.start());
    device.forget();

    service.appear();

    QCOMPARE(sentModes(device), modes);
    QCOMPARE(device.calls().at(0).section(QLatin1Char(' '), 0, 4),
             setAll(QString()).section(QLatin1Char(' '), 0, 4));
    QCOMPARE(device.log(), QStringList());
}

void TestUsbWhitelist::lockedPolicyCountsAsForbidden()
{
    Support::LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"),
                             {UsbMediaTransfer, UsbDeveloperMode});
    Support::Neighbour<Simulator::UsbModes> service;
    Enforcement device;
    QVERIFY(device.start());
    lock.setLocked({UsbMediaTransfer});

    service.appear();

    const QString developer = QStringLiteral("developer_mode");
    QCOMPARE(sentModes(device), QStringList({developer, developer}));
}

void TestUsbWhitelist::policyWithoutItsSwitchCountsAsForbidden()
{
    Support::SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("usb"), {13, 14}, true);
    Support::Neighbour<Simulator::UsbModes> service;
    Enforcement device;
    QVERIFY(device.start());
    plugin.setEntry(QStringLiteral("usb"), QStringLiteral("value"), false);

    service.appear();

    QCOMPARE(sentModes(device), QStringList(QStringLiteral("developer_mode")));
}

/// The tasks of the start come after it, each once: those of the stored values, then those of the
/// set-up.
void TestUsbWhitelist::whitelistIsSentOnceAndBeforeTheModes()
{
    Support::Neighbour<Simulator::UsbModes> service;
    Enforcement device;
    writePolicies(false, true, false);
    QVERIFY(device.start());
    device.forget();

    service.appear();
    const QStringList once{setMode("developer_mode", false), setMode("mtp_mode", true),
                           setMode("developer_mode", false)};
    QCOMPARE(device.calls(UsbModesName),
             QStringList(setAll(QStringLiteral("mtp_mode"))) + once + once);

    device.forget();
    QVERIFY(device.change(UsbMediaTransfer, false));
    QVERIFY(device.change(UsbMediaTransfer, true));
    QCOMPARE(device.calls(), QStringList({setMode("mtp_mode", false), setMode("mtp_mode", true)}));
}

void TestUsbWhitelist::whitelistAtStartHoldsWhatIsKnownSoFar_data()
{
    QTest::addColumn<bool>("usbDeveloperMode");
    QTest::addColumn<QString>("modes");
    QTest::newRow("allowed") << true << QStringLiteral("developer_mode");
    QTest::newRow("forbidden") << false << QString();
}

/// With the service there before the daemon, the first policy is enforced while the others have no
/// value yet. Their modes follow one by one.
void TestUsbWhitelist::whitelistAtStartHoldsWhatIsKnownSoFar()
{
    QFETCH(bool, usbDeveloperMode);
    QFETCH(QString, modes);
    Support::Neighbour<Simulator::UsbModes> service;
    service.appear();
    Enforcement device;
    writePolicies(usbDeveloperMode, true, true);
    QVERIFY(device.start());

    const QStringList once{setMode("developer_mode", usbDeveloperMode), setMode("mtp_mode", true),
                           setMode("developer_mode", true)};
    QCOMPARE(device.calls(UsbModesName), QStringList(setAll(modes)) + once + once);
}

void TestUsbWhitelist::restartedServiceGetsNoWhitelist()
{
    Support::Neighbour<Simulator::UsbModes> service;
    service.appear();
    Enforcement device;
    QVERIFY(device.start());
    service.leave();
    device.forget();

    service.appear();
    QVERIFY(device.change(UsbMediaTransfer, false));

    QCOMPARE(device.calls(), QStringList(setMode("mtp_mode", false)));
}

QTEST_GUILESS_MAIN(TestUsbWhitelist)
#include "tst_usbwhitelist.moc"
