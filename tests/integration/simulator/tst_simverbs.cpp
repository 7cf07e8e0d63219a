// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/files.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

namespace {

QJsonObject state()
{
    return Sim::run(QStringLiteral("status --json"))
        .json()
        .value(QStringLiteral("result"))
        .toObject();
}

QJsonArray listed(const char *key)
{
    return state().value(QLatin1String(key)).toArray();
}

} // namespace

/// Each verb that sees or handles a device, without a daemon.
class TestSimVerbs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void freshDevice();
    void statusIsOneScreen();
    void statusShowsTrouble();
    void servicesAreListed();
    void pluggedStorageIsMounted();
    void unplugNeedsNoLabelForTheOnlyOne();
    void labelIsRefusedTwice();
    void badLabels_data();
    void badLabels();
    void applicationsAreLaunchedOnce();
    void certified();
    void stoppedServiceComesBack();
    void expectWaits();
    void expectTellsWhatIsSo();
};

void TestSimVerbs::initTestCase()
{
    Sim::install();
}

void TestSimVerbs::init()
{
    Files::reset();
}

void TestSimVerbs::freshDevice()
{
    Sim device;
    QVERIFY(device.startDevice());
    const QJsonObject fresh = state();
    for (const char *on : {"microphone", "usb", "remoteAccess"})
        QCOMPARE(fresh.value(QLatin1String(on)), QJsonValue(true));
    for (const char *off : {"camera", "tethering", "certified"})
        QCOMPARE(fresh.value(QLatin1String(off)), QJsonValue(false));
    for (const char *empty : {"denylist", "running", "storage", "events"})
        QCOMPARE(fresh.value(QLatin1String(empty)), QJsonValue(QJsonArray()));
    QCOMPARE(fresh.value(QStringLiteral("usbModes")).toArray().size(), 4);
    QCOMPARE(fresh.value(QStringLiteral("eventCount")), QJsonValue(0));
}

void TestSimVerbs::statusIsOneScreen()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label \"MY PHOTOS\"")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("launch clock")).code, 0);
    const Sim::Outcome status = Sim::run(QStringLiteral("status"));
    QCOMPARE(status.code, 0);
    QVERIFY(status.lines().size() <= 24);
    for (const char *line :
         {"  camera          off  /var/lib/govd/camera_enabled", "  microphone      on",
          "  USB modes       charging_only, developer_mode, mass_storage, mtp_mode",
          "  running         clock", "  denylist        -",
          "  storage         MY PHOTOS (usb), mounted at /run/media/MY PHOTOS",
          "  services        all run"})
        QVERIFY2(status.lines().contains(QString::fromLatin1(line)), line);
    QVERIFY(!status.out.contains(QLatin1Char('\033')));
}

void TestSimVerbs::statusShowsTrouble()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("fail usb slow 2.5")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("stop audio")).code, 0);
    const QString text = Sim::run(QStringLiteral("status")).out;
    QVERIFY(
        text.contains(QStringLiteral("  services        audio stopped, usb fails: slow 2.5\n")));
}

void TestSimVerbs::servicesAreListed()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("fail network silent")).code, 0);
    const Sim::Outcome services = Sim::run(QStringLiteral("services"));
    QCOMPARE(services.lines().size(), 10);
    const QStringList network = services.lines().filter(QStringLiteral("net.connman"));
    QCOMPARE(network.size(), 1);
    QVERIFY(network.first().startsWith(QStringLiteral("network ")));
    QVERIFY(network.first().endsWith(QStringLiteral("fails: silent")));
    QCOMPARE(listed("services").size(), 10);
}

void TestSimVerbs::pluggedStorageIsMounted()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("plug usb")).out, QStringLiteral("STICK\n"));
    QCOMPARE(Sim::run(QStringLiteral("plug usb")).out, QStringLiteral("STICK2\n"));
    QCOMPARE(Sim::run(QStringLiteral("plug card")).out, QStringLiteral("CARD\n"));
    const QJsonArray storage = listed("storage");
    QCOMPARE(storage.size(), 3);
    for (const QJsonValue &medium : storage)
        QCOMPARE(medium[QStringLiteral("mounted")], QJsonValue(true));
    QCOMPARE(Sim::run(QStringLiteral("unplug STICK")).code, 0);
    QCOMPARE(listed("storage").size(), 2);
    QCOMPARE(Sim::run(QStringLiteral("plug usb")).out, QStringLiteral("STICK\n"));
}

void TestSimVerbs::unplugNeedsNoLabelForTheOnlyOne()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("unplug")).err,
             QStringLiteral("govd-sim: nothing is plugged in\n"));
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label A")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("unplug")).out, QStringLiteral("A\n"));
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label A")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("plug card --label B")).code, 0);
    const Sim::Outcome unplug = Sim::run(QStringLiteral("unplug"));
    QCOMPARE(unplug.code, 2);
    QVERIFY(unplug.err.contains(QStringLiteral("say which one to unplug: ")));
}

void TestSimVerbs::labelIsRefusedTwice()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label A")).code, 0);
    const Sim::Outcome again = Sim::run(QStringLiteral("plug card --label A"));
    QCOMPARE(again.code, 3);
    QCOMPARE(again.err,
             QStringLiteral("govd-sim: \"A\" is plugged in already; unplug it or choose another "
                            "label\n"));
    QCOMPARE(listed("storage").size(), 1);
}

void TestSimVerbs::badLabels_data()
{
    QTest::addColumn<QString>("label");
    QTest::newRow("slash") << "a/b";
    QTest::newRow("up") << "..";
    QTest::newRow("escape") << "\033[31m";
    QTest::newRow("line") << "a\nb";
}

void TestSimVerbs::badLabels()
{
    QFETCH(QString, label);
    Sim device;
    QVERIFY(device.startDevice());
    Sim sim;
    sim.start({QStringLiteral("plug"), QStringLiteral("usb"), QStringLiteral("--label"), label});
    const Sim::Outcome outcome = sim.finish();
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.err.count(QLatin1Char('\n')), 1);
    QVERIFY(!outcome.err.contains(QLatin1Char('\033')));
    QCOMPARE(listed("storage").size(), 0);
}

void TestSimVerbs::applicationsAreLaunchedOnce()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("launch messages")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("launch messages")).code, 0);
    QCOMPARE(listed("running"), QJsonArray({QStringLiteral("org.kvt.messages")}));
}

void TestSimVerbs::certified()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("certified yes")).code, 0);
    QCOMPARE(state().value(QStringLiteral("certified")), QJsonValue(true));
    QCOMPARE(Sim::run(QStringLiteral("certified no")).code, 0);
    QCOMPARE(state().value(QStringLiteral("certified")), QJsonValue(false));
}

void TestSimVerbs::stoppedServiceComesBack()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("stop storage")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("expect service storage absent")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("plug card")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("start storage")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("start storage")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("expect service storage present")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("expect storage CARD mounted")).code, 0);
}

void TestSimVerbs::expectWaits()
{
    Sim device;
    QVERIFY(device.startDevice());
    Sim expect;
    expect.start(QProcess::splitCommand(
        QStringLiteral("expect storage \"LATE ONE\" mounted --timeout 60 --json")));
    Sim negative;
    negative.start(QProcess::splitCommand(QStringLiteral("expect running clock yes --timeout 60")));
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label \"LATE ONE\"")).code, 0);
    const QJsonObject result = expect.finish().json().value(QStringLiteral("result")).toObject();
    QCOMPARE(result.value(QStringLiteral("value")), QJsonValue(QStringLiteral("mounted")));
    QCOMPARE(Sim::run(QStringLiteral("launch clock")).code, 0);
    QCOMPARE(negative.finish().code, 0);
}

void TestSimVerbs::expectTellsWhatIsSo()
{
    Sim device;
    QVERIFY(device.startDevice());
    const Sim::Outcome outcome = Sim::run(QStringLiteral("expect microphone off --timeout 0.2"));
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.err, QStringLiteral("govd-sim: microphone is on, not off, after 0.2 s\n"));
    QCOMPARE(Sim::run(QStringLiteral("expect storage X mounted --timeout 0.2")).err,
             QStringLiteral("govd-sim: storage X is absent, not mounted, after 0.2 s\n"));
    QCOMPARE(Sim::run(QStringLiteral("expect storage %1 mounted --timeout 0.2")).err,
             QStringLiteral("govd-sim: storage %1 is absent, not mounted, after 0.2 s\n"));
}

QTEST_GUILESS_MAIN(TestSimVerbs)
#include "tst_simverbs.moc"
