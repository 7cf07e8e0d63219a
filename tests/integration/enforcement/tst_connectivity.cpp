// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/developermode.h"
#include "simulator/networktechnology.h"
#include "support/files.h"
#include "support/neighbour.h"
#include "support/watcheddaemon.h"
#include "support/wording.h"

#include <QTest>

using namespace Support;

namespace {

const QString DeveloperMode = QStringLiteral("DeveloperModeEnabled");
const QString Tethering = QStringLiteral("InternetSharingEnabled");

const QString DeveloperModeName = QStringLiteral("org.kvt.developermode");
const QString NetworkName = QStringLiteral("net.connman");

QString disableRemoteAccess()
{
    return Wording::call(QStringLiteral("org.kvt.developermode / org.kvt.developermode"),
                         QStringLiteral("SetRemoteConnectionEnabled"), QStringLiteral("b"),
                         {false});
}

QString disableTethering()
{
    return Wording::call(
        QStringLiteral("net.connman /net/connman/technology/wifi net.connman.Technology"),
        QStringLiteral("SetProperty"), QStringLiteral("sv"), {QStringLiteral("Tethering"), false});
}

} // namespace

class TestConnectivity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

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
    Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(DeveloperMode, false));

    QCOMPARE(daemon.calls(), QStringList({disableRemoteAccess(), disableRemoteAccess()}));
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(!mode.ask(
        [](Simulator::DeveloperMode &service) { return service.isRemoteConnectionEnabled(); }));
}

void TestConnectivity::remoteAccessIsDisabledDirectlyWhileTheServiceIsUnseen()
{
    Neighbour<Simulator::DeveloperMode> mode;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(DeveloperMode, false));
    QCOMPARE(daemon.calls(), QStringList(disableRemoteAccess()));
    QCOMPARE(daemon.logged(),
             QStringList(QStringLiteral(
                 "warning|default|Failed to disable remote access in developer mode.")));

    daemon.forget();
    mode.appear();
    QCOMPARE(daemon.calls(), QStringList(disableRemoteAccess()));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestConnectivity::allowedDeveloperModeSwitchesNoRemoteAccessOn()
{
    Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.hasLeftAlone(DeveloperModeName));
    QVERIFY(daemon.change(DeveloperMode, false));
    daemon.forget();

    QVERIFY(daemon.change(DeveloperMode, true));

    QCOMPARE(daemon.calls(), QStringList());
    QVERIFY(daemon.hasLeftAlone(DeveloperModeName));
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
    Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    mode.suffer(trouble);

    QVERIFY(daemon.change(DeveloperMode, false));

    QCOMPARE(daemon.calls(), QStringList({disableRemoteAccess(), disableRemoteAccess()}));
    const QString failure =
        QStringLiteral("warning|default|Failed to disable remote access in developer mode.");
    QCOMPARE(daemon.logged(), QStringList({failure, failure}));
}

void TestConnectivity::oddAnswerForRemoteAccessIsSuccess_data()
{
    Oddity::addRows();
}

void TestConnectivity::oddAnswerForRemoteAccessIsSuccess()
{
    QFETCH(Oddity, oddity);
    Neighbour<Simulator::DeveloperMode> mode;
    mode.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    mode.fail(oddity.fault);

    QVERIFY(daemon.change(DeveloperMode, false));

    QCOMPARE(daemon.calls(), QStringList({disableRemoteAccess(), disableRemoteAccess()}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestConnectivity::tetheringIsDisabled()
{
    Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.ask([](Simulator::NetworkTechnology &service) { service.setTethering(true); });
    wifi.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QCOMPARE(daemon.calls(NetworkName), QStringList());
    daemon.forget();

    QVERIFY(daemon.change(Tethering, false));

    QCOMPARE(daemon.calls(), QStringList(disableTethering()));
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(!wifi.ask([](Simulator::NetworkTechnology &service) { return service.isTethering(); }));
}

void TestConnectivity::allowedTetheringIsNotRestored()
{
    Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.hasLeftAlone(NetworkName));
    QVERIFY(daemon.change(Tethering, false));
    daemon.forget();

    QVERIFY(daemon.change(Tethering, true));

    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(daemon.hasLeftAlone(NetworkName));
}

void TestConnectivity::tetheringWaitsForTheService()
{
    Neighbour<Simulator::NetworkTechnology> wifi;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(Tethering, false));
    QVERIFY(daemon.change(Tethering, true));
    QVERIFY(daemon.change(Tethering, false));
    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());

    wifi.appear();

    QCOMPARE(daemon.calls(), QStringList({disableTethering(), disableTethering()}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestConnectivity::failureForTetheringNamesTheError_data()
{
    Trouble::addRows(NetworkName);
}

void TestConnectivity::failureForTetheringNamesTheError()
{
    QFETCH(Trouble, trouble);
    Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    wifi.suffer(trouble);

    QVERIFY(daemon.change(Tethering, false));

    QCOMPARE(daemon.calls(), QStringList(disableTethering()));
    QCOMPARE(daemon.logged(),
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
    Neighbour<Simulator::NetworkTechnology> wifi;
    wifi.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    wifi.fail(oddity.fault);

    QVERIFY(daemon.change(Tethering, false));

    QCOMPARE(daemon.calls(), QStringList(disableTethering()));
    QCOMPARE(daemon.logged(), QStringList());
}

QTEST_GUILESS_MAIN(TestConnectivity)
#include "tst_connectivity.moc"
