// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/mount.h"
#include "support/neighbours.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include "simulator/applicationsandbox.h"
#include "simulator/deviceinformation.h"
#include "simulator/devicesentry.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Sandbox = QStringLiteral("org.pelloraos.appjaild1");
const QString Sentry = QStringLiteral("org.brinos.DeviceSentry1");
const QString UserReportMarker = QStringLiteral("/var/lib/govd/user_report_enabled");

/// The daemon on a platform whose library lists other policies; see otherplatform/policyvalue.h.
class ForeignDaemon : public Daemon
{
public:
    ForeignDaemon()
    {
        setEnvironment(QStringLiteral("LD_LIBRARY_PATH"), QStringLiteral(GOVD_TEST_OTHERPLATFORM));
    }
};

} // namespace

/// The daemon takes the policies from the platform, and acts on them by number.
class TestOtherPlatform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void policiesAreThoseOfThePlatform();
    void actionsFollowTheNumber();
    void userReportDefaultFollowsTheName();
    void numbersBeyondTheWalkAreEnforcedAsStoredOnly();
    void numbersBeyondTheWalkWithoutAValueAreNotEnforced();
    void firstPassFollowsThePlatformsOrder();
    void switchesGovernByNumber();
};

void TestOtherPlatform::init()
{
    Files::reset();
}

void TestOtherPlatform::policiesAreThoseOfThePlatform()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\nlensallowed=false\n");
    ForeignDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Files::read(PolicyFile),
             "[policy]\nCameraEnabled=false\nlensallowed=false\nUsbAllowed=true\nNoPolicy=true\n"
             "LensAllowed=true\nUserReportExportEnabled=false\nTorchAllowed=true\n"
             "userReportExportEnabled=true\nReportsAllowed=true\n");
    Client client;
    QVERIFY(client.haveNoValue(texts({"CameraEnabled", "lensallowed", "UsbDevicesEnabled"})));
    QCOMPARE(client.policy(QStringLiteral("LensAllowed")), QVariant(true));
    QCOMPARE(client.policy(QStringLiteral("ReportsAllowed")), QVariant(true));
}

void TestOtherPlatform::actionsFollowTheNumber()
{
    Files::write(PolicyFile, "[policy]\nLensAllowed=false\n");
    ForeignDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(CameraMarker));
    Client client;
    QVERIFY(client.setPolicy(QStringLiteral("LensAllowed"), true));
    QVERIFY(QFile::exists(CameraMarker));
    QVERIFY(client.setPolicy(QStringLiteral("CameraEnabled"), false)); // a key like any other here
    QVERIFY(QFile::exists(CameraMarker));
}

void TestOtherPlatform::userReportDefaultFollowsTheName()
{
    Neighbours neighbours;
    auto *device = neighbours.add<Simulator::DeviceInformation>();
    neighbours.run([device] { device->setOsCertified(true); });
    ForeignDaemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(QStringLiteral("UserReportExportEnabled")), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("userReportExportEnabled")), QVariant(true));
    QVERIFY(QFile::exists(UserReportMarker)); // the marker of number 41, which is allowed
}

void TestOtherPlatform::numbersBeyondTheWalkAreEnforcedAsStoredOnly()
{
    Neighbours neighbours;
    neighbours.add<Simulator::ApplicationSandbox>();
    neighbours.add<Simulator::DeviceSentry>();
    ForeignDaemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    const QString camera =
        QStringLiteral("RemoveFromGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])");
    const QString reports = QStringLiteral("RemoveFromGlobalDenylist([])");
    QCOMPARE(neighbours.calls(Sandbox), QStringList({camera, reports, camera}));
    QCOMPARE(neighbours.calls(Sentry),
             texts({"Set(org.brinos.DeviceSentry1.UsbManager,Enabled,true)"}));
}

void TestOtherPlatform::numbersBeyondTheWalkWithoutAValueAreNotEnforced()
{
    Files::write(CameraMarker, {});
    Files::write(UserReportMarker, {});
    const Mount mount = Mount::readOnly(QStringLiteral("/etc/policy"));
    Neighbours neighbours;
    neighbours.add<Simulator::DeviceSentry>();
    ForeignDaemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QVERIFY(!QFile::exists(CameraMarker));
    QVERIFY(QFile::exists(UserReportMarker));
    QCOMPARE(neighbours.calls(Sentry), QStringList());
}

void TestOtherPlatform::firstPassFollowsThePlatformsOrder()
{
    Neighbours neighbours;
    neighbours.add<Simulator::ApplicationSandbox>();
    neighbours.add<Simulator::DeviceSentry>();
    ForeignDaemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    const QStringList calls = neighbours.calls();
    QCOMPARE(
        calls.mid(0, 5),
        texts({"Set(org.brinos.DeviceSentry1.UsbManager,Enabled,true)",
               "RemoveFromGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])",
               "Get(org.kvt.deviceinfo.Features,isOsCertified)", "RemoveFromGlobalDenylist([])",
               "RemoveFromGlobalDenylist([org.kvt.cameralockscreen,org.kvt.camera])"}));
}

void TestOtherPlatform::switchesGovernByNumber()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("port"), {45, 4, 100}, false);
    ForeignDaemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(QStringLiteral("UsbAllowed")), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("LensAllowed")), QVariant(true));
}

QTEST_GUILESS_MAIN(TestOtherPlatform)
#include "tst_otherplatform.moc"
