// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/developermode.h"
#include "simulator/networktechnology.h"
#include "support/enforcement.h"
#include "support/neighbour.h"

#include <QTest>

using Support::Enforcement;
using Support::Oddity;
using Support::Trouble;

namespace {

const QString DeveloperMode = QStringLiteral("DeveloperModeEnabled");
const QString Tethering = QStringLiteral("InternetSharingEnabled");

const QString DeveloperModeName = QStringLiteral("org.kvt.developermode");
const QString NetworkName = QStringLiteral("net.connman");

QString disableRemoteAccess()
{
    return Enforcement::callText(QStringLiteral("org.kvt.developermode / org.kvt.developermode"),
                                 QStringLiteral("SetRemoteConnectionEnabled"), QStringLiteral("b"),
                                 {false});
}

QString disableTethering()
{
    return Enforcement::callText(
        QStringLiteral("net.connman /net/connman/technology/wifi net.connman.Technology"),
        QStringLiteral("SetProperty"), QStringLiteral("sv"), {QStringLiteral("Tethering"), false});
}

} // namespace

class TestConnectivity : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void remoteAccessIsDisabledOnBothRoutes();
    void remoteAccessIsDisabledDirectlyWhileTheServiceIsUnseen();
    void allowedDeveloperModeSwitchesNoRemoteAccessOn();
    void failureForRemoteAccessIsOneLineForEachRoute_data();
    void failureForRemoteAccessIsOneLineForEachRoute();
    void oddAnswerForRemoteAccessIsSuccess_data();
    void oddAnswerForRemoteAccessIsSuccess();

    void tetheringIsDisabled();
    void allowedTetheringIsNotRestored();
    void tetheringWaitsForTheService();
    void failureForTetheringNamesTheError_data();
    void failureForTetheringNamesTheError();
    void oddAnswerForTetheringIsSuccess_data();
    void oddAnswerForTetheringIsSuccess();
};

void TestConnectivity::remoteAccessIsDisabledOnBothRoutes()
{
    Support::Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(DeveloperMode, false));

    QCOMPARE(device.calls(), QStringList({disableRemoteAccess(), disableRemoteAccess()}));
    QCOMPARE(device.log(), QStringList());
    QVERIFY(!mode.ask(
        [](Simulator::DeveloperMode &service) { return service.isRemoteConnectionEnabled(); }));
}

void TestConnectivity::remoteAccessIsDisabledDirectlyWhileTheServiceIsUnseen()
{
    Support::Neighbour<Simulator::DeveloperMode> mode;
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(DeveloperMode, false));
    QCOMPARE(device.calls(), QStringList(disableRemoteAccess()));
    QCOMPARE(device.log(),
             QStringList(QStringLiteral(
                 "warning|default|Failed to disable remote access in developer mode.")));

    device.forget();
    mode.appear();
    QCOMPARE(device.calls(), QStringList(disableRemoteAccess()));
    QCOMPARE(device.log(), QStringList());
}

void TestConnectivity::allowedDeveloperModeSwitchesNoRemoteAccessOn()
{
    Support::Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    Enforcement device;
    QVERIFY(device.start());
    QCOMPARE(device.calls(DeveloperModeName), QStringList());
    QVERIFY(device.change(DeveloperMode, false));
    device.forget();

    QVERIFY(device.change(DeveloperMode, true));

    QCOMPARE(device.calls(), QStringList());
    QVERIFY(!mode.ask(
        [](Simulator::DeveloperMode &service) { return service.isRemoteConnectionEnabled(); }));
}

void TestConnectivity::failureForRemoteAccessIsOneLineForEachRoute_data()
{
    Trouble::addRows(DeveloperModeName);
}

void TestConnectivity::failureForRemoteAccessIsOneLineForEachRoute()
{
    QFETCH(Trouble, trouble);
    Support::Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    mode.suffer(trouble);

    QVERIFY(device.change(DeveloperMode, false));

    QCOMPARE(device.calls(), QStringList({disableRemoteAccess(), disableRemoteAccess()}));
    const QString failure =
        QStringLiteral("warning|default|Failed to disable remote access in developer mode.");
    QCOMPARE(device.log(), QStringList({failure, failure}));
}

void TestConnectivity::oddAnswerForRemoteAccessIsSuccess_data()
{
    Oddity::addRows();
}

void TestConnectivity::oddAnswerForRemoteAccessIsSuccess()
{
    QFETCH(Oddity, oddity);
    Support::Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    mode.fail(oddity.fault);

    QVERIFY(device.change(DeveloperMode, false));

    QCOMPARE(device.calls(), QStringList({disableRemoteAccess(), disableRemoteAccess()}));
    QCOMPARE(device.log(), QStringList());
}

void TestConnectivity::tetheringIsDisabled()
{
    Support::Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.ask([](Simulator::NetworkTechnology &service) { service.setTethering(true); });
    wifi.appear();
    Enforcement device;
    QVERIFY(device.start());
    QCOMPARE(device.calls(NetworkName), QStringList());
    device.forget();

    QVERIFY(device.change(Tethering, false));

    QCOMPARE(device.calls(), QStringList(disableTethering()));
    QCOMPARE(device.log(), QStringList());
    QVERIFY(!wifi.ask([](Simulator::NetworkTechnology &service) { return service.isTethering(); }));
}

void TestConnectivity::allowedTetheringIsNotRestored()
{
    Support::Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.appear();
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(device.change(Tethering, false));
    device.forget();

    QVERIFY(device.change(Tethering, true));

    QCOMPARE(device.calls(), QStringList());
    QCOMPARE(device.log(), QStringList());
}

void TestConnectivity::tetheringWaitsForTheService()
{
    Support::Neighbour<Simulator::NetworkTechnology> wifi;
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    QVERIFY(device.change(Tethering, false));
    QVERIFY(device.change(Tethering, true));
    QVERIFY(device.change(Tethering, false));
    QCOMPARE(device.calls(), QStringList());
    QCOMPARE(device.log(), QStringList());

    wifi.appear();

    QCOMPARE(device.calls(), QStringList({disableTethering(), disableTethering()}));
    QCOMPARE(device.log(), QStringList());
}

void TestConnectivity::failureForTetheringNamesTheError_data()
{
    Trouble::addRows(NetworkName);
}

void TestConnectivity::failureForTetheringNamesTheError()
{
    QFETCH(Trouble, trouble);
    Support::Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    wifi.suffer(trouble);

    QVERIFY(device.change(Tethering, false));

    QCOMPARE(device.calls(), QStringList(disableTethering()));
    QCOMPARE(device.log(),
             QStringList(QStringLiteral("warning|default|Failed to disable internet sharing:"
                                        " QDBusError(\"%1\", \"%2\")")
                             .arg(trouble.errorName, trouble.errorMessage)));
}

void TestConnectivity::oddAnswerForTetheringIsSuccess_data()
{
    Oddity::addRows();
}

void TestConnectivity::oddAnswerForTetheringIsSuccess()
{
    QFETCH(Oddity, oddity);
    Support::Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    wifi.fail(oddity.fault);

    QVERIFY(device.change(Tethering, false));

    QCOMPARE(device.calls(), QStringList(disableTethering()));
    QCOMPARE(device.log(), QStringList());
}

QTEST_GUILESS_MAIN(TestConnectivity)
#include "tst_connectivity.moc"
