// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbours.h"
#include "support/platformkeys.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include "simulator/deviceinformation.h"

#include <QtTest>

Q_DECLARE_METATYPE(Simulator::Fault)

using namespace Support;

namespace {

const QString UserReport = QStringLiteral("UserReportExportEnabled");
const QString UserReportMarker = QStringLiteral("/var/lib/govd/user_report_enabled");
const QString DeviceInformation = QStringLiteral("org.kvt.deviceinfo");

/// Lines of a policy file for @p keys, with the values that they have by default on a device that
/// does not tell whether it is certified.
QByteArray defaultLines(const QStringList &keys)
{
    QByteArray lines;
    for (const QString &key : keys)
        lines += key.toLatin1() + (key == UserReport ? "=false\n" : "=true\n");
    return lines;
}

} // namespace

/// The values of policies that no file names.
class TestDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void everythingIsAllowedButUserReports();
    void defaultsAreRecordedInThePlatformsOrder();
    void secondStartFindsTheDefaultsAsConfigured();
    void configuredPoliciesKeepTheirValues();
    void defaultsAreNeitherAuditedNorAnnounced();
    void lockedPolicyGetsNoDefault();
    void userReportsFollowTheCertificate_data();
    void userReportsFollowTheCertificate();
    void certificateIsAskedForInItsTurn();
    void certificateDoesNotMatterForAConfiguredPolicy();
};

void TestDefaults::init()
{
    Files::reset();
}

void TestDefaults::everythingIsAllowedButUserReports()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    const QStringList keys = platformKeys();
    QCOMPARE(keys.size(), 46);
    Client client;
    for (const QString &key : keys)
        QCOMPARE(client.policy(key), QVariant(key != QLatin1String("UserReportExportEnabled")));

    QVERIFY(QFile::exists(CameraMarker));
    QVERIFY(!QFile::exists(UserReportMarker));
    QVERIFY(!QFile::exists(QStringLiteral("/var/lib/devel-su/.disable")));
}

void TestDefaults::defaultsAreRecordedInThePlatformsOrder()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Files::read(PolicyFile), "[policy]\n" + defaultLines(platformKeys()));
    QCOMPARE(platformKeys().first(), QStringLiteral("NoPolicy"));
    QCOMPARE(QDir(QStringLiteral("/etc/policy")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             texts({"policy.conf"}));
}

void TestDefaults::secondStartFindsTheDefaultsAsConfigured()
{
    Neighbours neighbours;
    auto *device = neighbours.add<Simulator::DeviceInformation>();
    neighbours.run([device] { device->setOsCertified(true); });
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(UserReport), QVariant(false));
    QCOMPARE(daemon.stop(), 0);
    const QByteArray content = Files::read(PolicyFile);

    // A device does not lose what was decided when its certificate changes.
    neighbours.run([device] { device->setOsCertified(false); });
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(UserReport), QVariant(false));
    QCOMPARE(Files::read(PolicyFile), content);
}

void TestDefaults::configuredPoliciesKeepTheirValues()
{
    Files::write(PolicyFile,
                 "[policy]\nMessagesEnabled=false\nCameraEnabled=false\n"
                 "UserReportExportEnabled=true\nNoPolicy=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    const QStringList configured =
        texts({"MessagesEnabled", "CameraEnabled", "UserReportExportEnabled", "NoPolicy"});
    Client client;
    QStringList others;
    const QStringList keys = platformKeys();
    for (const QString &key : keys) {
        QCOMPARE(client.policy(key), QVariant(!configured.contains(key) || key == UserReport));
        if (!configured.contains(key))
            others.append(key);
    }
    QCOMPARE(others.size(), 42);
    QCOMPARE(Files::read(PolicyFile),
             "[policy]\nMessagesEnabled=false\nCameraEnabled=false\n"
             "UserReportExportEnabled=true\nNoPolicy=false\n"
                 + defaultLines(others));
    QVERIFY(QFile::exists(UserReportMarker));
}

void TestDefaults::defaultsAreNeitherAuditedNorAnnounced()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.said().filter(QStringLiteral("sendEventStringAlt")), QStringList());
    QCOMPARE(daemon.announcements(), QStringList());
}

void TestDefaults::lockedPolicyGetsNoDefault()
{
    const QString camera = QStringLiteral("CameraEnabled");
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {camera, UserReport});
    lock.setLocked({camera, UserReport});
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(camera), QVariant(false));
    QCOMPARE(client.policy(UserReport), QVariant(false));
    const QMap<QString, QString> values = Files::values(PolicyFile);
    QCOMPARE(values.size(), 44);
    QVERIFY(!values.contains(camera) && !values.contains(UserReport));
    QVERIFY(!QFile::exists(CameraMarker));

    // What is left when the lock is gone is no value at all.
    lock.setLocked({});
    QVERIFY(client.haveNoValue({camera, UserReport}));
}

void TestDefaults::userReportsFollowTheCertificate_data()
{
    using Simulator::Fault;
    const auto variant = [](const QVariant &value) {
        return Fault::wrongAnswer({QVariant::fromValue(QDBusVariant(value))});
    };
    const auto error = [](const char *name) {
        return Fault::error(QLatin1String("org.freedesktop.DBus.Error.") + QLatin1String(name));
    };
    QTest::addColumn<bool>("isCertified");
    QTest::addColumn<Simulator::Fault>("fault");
    QTest::addColumn<bool>("allowed");
    QTest::newRow("certified") << true << Fault() << false;
    QTest::newRow("not certified") << false << Fault() << true;
    QTest::newRow("not certified, and slow to say so") << false << Fault::late(200) << true;
    QTest::newRow("no such property") << false << error("UnknownProperty") << false;
    QTest::newRow("no such interface") << false << error("UnknownInterface") << false;
    QTest::newRow("no such object") << false << error("UnknownObject") << false;
    QTest::newRow("no right to ask") << false << error("AccessDenied") << false;
    QTest::newRow("another error") << false << Fault::error() << false;
    QTest::newRow("service gone before its answer") << false << Fault::death() << false;
    QTest::newRow("answer without a value") << false << Fault::wrongAnswer({}) << false;
    QTest::newRow("answer that is no variant") << false << Fault::wrongAnswer({false}) << false;
    QTest::newRow("text") << false << variant(QStringLiteral("no certificate")) << false;
    QTest::newRow("text that reads as false") << true << variant(QStringLiteral("false")) << true;
    QTest::newRow("number") << false << variant(1) << false;
    QTest::newRow("number that reads as false") << true << variant(0) << true;
    QTest::newRow("list") << false << variant(QStringList()) << false;
    QTest::newRow("map") << false << variant(QVariantMap()) << false;
}

void TestDefaults::userReportsFollowTheCertificate()
{
    QFETCH(const bool, isCertified);
    QFETCH(const Simulator::Fault, fault);
    QFETCH(const bool, allowed);
    Neighbours neighbours;
    auto *device = neighbours.add<Simulator::DeviceInformation>();
    neighbours.run([=] {
        device->setOsCertified(isCertified);
        device->setFault(fault);
    });
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(UserReport), QVariant(allowed));
    QCOMPARE(QFile::exists(UserReportMarker), allowed);
    QCOMPARE(Files::values(PolicyFile).value(UserReport),
             allowed ? QStringLiteral("true") : QStringLiteral("false"));
    QCOMPARE(daemon.log(),
             texts({"warning|default|Failed to disable USB devices connection.",
                    "warning|default|Failed to disable USB devices connection."}));
}

void TestDefaults::certificateIsAskedForInItsTurn()
{
    Neighbours neighbours;
    neighbours.add<Simulator::DeviceInformation>();
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(DeviceInformation),
             texts({"Get(org.kvt.deviceinfo.Features,isOsCertified)"}));
    const BusMessage question = neighbours.monitor()
                                    .messages([](const BusMessage &message) {
                                        return message.isCallOf(QStringLiteral("Get"))
                                            && message.destination == DeviceInformation;
                                    })
                                    .value(0);
    QCOMPARE(question.path, QStringLiteral("/org/kvt/deviceinfo/Features"));
    QCOMPARE(question.interface, QStringLiteral("org.freedesktop.DBus.Properties"));
    // The one policy with an action on the bus after that of user reports comes later.
    const QStringList all = neighbours.calls();
    QCOMPARE(all.indexOf(QStringLiteral("Get(org.kvt.deviceinfo.Features,isOsCertified)")), 0);
    QCOMPARE(all.count(QStringLiteral("Set(org.brinos.DeviceSentry1.UsbManager,Enabled,true)")), 2);
}

void TestDefaults::certificateDoesNotMatterForAConfiguredPolicy()
{
    Files::write(PolicyFile, "[policy]\nUserReportExportEnabled=true\n");
    Neighbours neighbours;
    auto *device = neighbours.add<Simulator::DeviceInformation>();
    neighbours.run([device] { device->setOsCertified(true); });
    Daemon daemon;
    QVERIFY(daemon.start());
    neighbours.monitor().settle();
    QCOMPARE(neighbours.calls(DeviceInformation), QStringList());
    QCOMPARE(Client().policy(UserReport), QVariant(true));
}

QTEST_GUILESS_MAIN(TestDefaults)
#include "tst_defaults.moc"
