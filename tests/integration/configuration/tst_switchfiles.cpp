// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmonitor.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/openwatch.h"
#include "support/switchplugin.h"
#include "support/systemlog.h"
#include "support/texts.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Directory = QStringLiteral("/etc/policy/switch.d/");
const QString Lens = QStringLiteral("lens");
const QString Radio = QStringLiteral("radio");
const QByteArray LensOn = "[policy]\nlens=true\n";
const QByteArray LensOff = "[policy]\nlens=false\n";

QStringList usualLog()
{
    return texts({"warning|default|Failed to disable USB devices connection.",
                  "warning|default|Failed to disable USB devices connection."});
}

/// The values that the plugin was told, in order.
QStringList told(const SwitchPlugin &plugin)
{
    return plugin.calls().filter(QRegularExpression(QStringLiteral("^setKeyValue ")));
}

} // namespace

/// Values of switches in files: which are read, and that the plugin is told.
class TestSwitchFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void nobodyOpensThemWithoutAPlugin();
    void singleFileIsReadAlone();
    void directoryIsReadWithoutTheSingleFile();
    void filesAreAppliedByNameWhateverTheirLetters();
    void allKeysAreToldInTheirOrder();
    void valuesThatAreNoBooleansAreSkipped();
    void fileThatTellsNothing_data();
    void fileThatTellsNothing();
    void refusedValueIsNotRecorded();
    void acceptedValuesAreRecorded();
    void valuesAreAudited();
    void switchesGoBeforePolicies();
    void announcementsDuringTheStartAreTaken();
};

void TestSwitchFiles::init()
{
    Files::reset();
}

void TestSwitchFiles::nobodyOpensThemWithoutAPlugin()
{
    Files::write(SwitchFile, LensOn);
    Files::write(Directory + QStringLiteral("seed.conf"), LensOn);
    const FileSnapshot before = Files::snapshot(SwitchFile);
    const OpenWatch file(SwitchFile);
    const OpenWatch directory(Directory);
    const OpenWatch seed(Directory + QStringLiteral("seed.conf"));
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(file.opened(), 0);
    QCOMPARE(directory.opened(), 0);
    QCOMPARE(seed.opened(), 0);
    QVERIFY(Files::snapshot(SwitchFile) == before);
    QCOMPARE(Client().switchValue(Lens), QVariant(false));
    QCOMPARE(daemon.log(), usualLog());

    // The same without the single file, where the directory would be next.
    QCOMPARE(daemon.stop(), 0);
    QVERIFY(QFile::remove(SwitchFile));
    QVERIFY(daemon.start());
    QCOMPARE(directory.opened(), 0);
    QCOMPARE(seed.opened(), 0);
    QVERIFY(!QFile::exists(SwitchFile));
}

void TestSwitchFiles::singleFileIsReadAlone()
{
    Files::write(SwitchFile, LensOn);
    Files::write(Directory + QStringLiteral("seed.conf"), "[policy]\nradio=true\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    plugin.setSwitch(Radio, {5}, false);
    const OpenWatch directory(Directory);
    const OpenWatch file(SwitchFile);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(told(plugin), texts({"setKeyValue lens true"}));
    QCOMPARE(directory.opened(), 0);
    QVERIFY(file.opened() > 0);
    QCOMPARE(Client().switchValue(Lens), QVariant(true));
    QCOMPARE(Client().switchValue(Radio), QVariant(false));
}

void TestSwitchFiles::directoryIsReadWithoutTheSingleFile()
{
    Files::write(Directory + QStringLiteral("seed"), LensOn);
    Files::write(Directory + QStringLiteral(".hidden"), "[policy]\nradio=true\n");
    Files::write(Directory + QStringLiteral("below/seed"), "[policy]\nradio=true\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    plugin.setSwitch(Radio, {5}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(told(plugin), texts({"setKeyValue lens true"}));
    QCOMPARE(Files::read(SwitchFile), LensOn);
    QCOMPARE(daemon.log(), usualLog());

    // The directory was a seed: the next start reads the file that came of it.
    QCOMPARE(daemon.stop(), 0);
    Files::write(Directory + QStringLiteral("seed"), LensOff);
    QVERIFY(daemon.start());
    QCOMPARE(told(plugin), texts({"setKeyValue lens true", "setKeyValue lens true"}));
}

void TestSwitchFiles::filesAreAppliedByNameWhateverTheirLetters()
{
    Files::write(Directory + QStringLiteral("B.conf"), LensOff);
    Files::write(Directory + QStringLiteral("a.conf"), LensOn);
    Files::write(Directory + QStringLiteral("c.conf"), LensOn);
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(told(plugin),
             texts({"setKeyValue lens true", "setKeyValue lens false", "setKeyValue lens true"}));
}

void TestSwitchFiles::allKeysAreToldInTheirOrder()
{
    Files::write(SwitchFile,
                 "[other]\ngate=true\n\n[policy]\nradio=true\nCameraEnabled=true\n"
                 "lens=false\nno such switch=1\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, true);
    plugin.setSwitch(Radio, {5}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(told(plugin),
             texts({"setKeyValue radio true", "setKeyValue CameraEnabled true",
                    "setKeyValue lens false", "setKeyValue no such switch true"}));
}

void TestSwitchFiles::valuesThatAreNoBooleansAreSkipped()
{
    Files::write(SwitchFile, "[policy]\nlens=yes\nradio=true\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, false);
    plugin.setSwitch(Radio, {}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(told(plugin), texts({"setKeyValue radio true"}));
    QCOMPARE(Files::read(SwitchFile), QByteArray("[policy]\nlens=yes\nradio=true\n"));
    QCOMPARE(daemon.log(), usualLog());
}

void TestSwitchFiles::fileThatTellsNothing_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no key file") << QByteArray("lens: true\n");
    QTest::newRow("no group of policies") << QByteArray("[switch]\nlens=true\n");
    QTest::newRow("empty group") << QByteArray("[policy]\n");
    // Unlike policies, switches are taken from a file as a whole or not at all.
    QTest::newRow("break in the middle") << QByteArray("[policy]\nlens=true\n<broken>\n");
}

void TestSwitchFiles::fileThatTellsNothing()
{
    QFETCH(const QByteArray, content);
    for (const QString &path : {SwitchFile, Directory + QStringLiteral("seed.conf")}) {
        Files::reset();
        Files::write(path, content);
        SwitchPlugin plugin;
        plugin.setSwitch(Lens, {1}, false);
        Daemon daemon;
        QVERIFY(daemon.start());
        QCOMPARE(told(plugin), QStringList());
        QCOMPARE(Files::read(path), content);
        QCOMPARE(daemon.log(), usualLog());
    }
}

void TestSwitchFiles::refusedValueIsNotRecorded()
{
    Files::write(Directory + QStringLiteral("seed.conf"), "[policy]\ngate=true\nlens=true\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, false);
    plugin.setEntry(Lens, QStringLiteral("result"), 3);
    SystemLog systemLog;
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(SwitchFile));
    systemLog.settle();
    QCOMPARE(systemLog.lines().size(), 0);
    const QStringList log = daemon.log();
    QCOMPARE(log.filter(QStringLiteral("set value")),
             texts({"warning|default|AccessSwitch plugin failed to set value for key: \"gate\"",
                    "warning|default|AccessSwitch plugin failed to set value for key: \"lens\""}));
    QVERIFY(log.contains(QStringLiteral("warning|default|Return code: 3")));
}

void TestSwitchFiles::acceptedValuesAreRecorded()
{
    Files::write(Directory + QStringLiteral("1"), LensOn);
    Files::write(Directory + QStringLiteral("2"), "[policy]\nradio=0\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, false);
    plugin.setSwitch(Radio, {}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Files::read(SwitchFile), QByteArray("[policy]\nlens=true\nradio=false\n"));
    QCOMPARE(plugin.value(Lens), QJsonValue(true));
    QCOMPARE(plugin.value(Radio), QJsonValue(false));
}

void TestSwitchFiles::valuesAreAudited()
{
    Files::write(SwitchFile, LensOn);
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    SystemLog systemLog;
    Daemon daemon;
    QVERIFY(daemon.start());
    systemLog.settle();
    QCOMPARE(systemLog.lines().size(), 1);
    QCOMPARE(systemLog.lines().first().text,
             QStringLiteral("Policy lens changed. Old value false. New value true."));
}

void TestSwitchFiles::switchesGoBeforePolicies()
{
    Files::write(SwitchFile, LensOn);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=true\n");
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    plugin.setEntry(Lens, QStringLiteral("announce"), QStringLiteral("never"));
    plugin.hold(QStringLiteral("setKeyValue"));
    Daemon daemon;
    const OpenWatch policies(PolicyFile);
    daemon.launch();
    QVERIFY(plugin.waitForCall(QStringLiteral("holding setKeyValue")));
    QCOMPARE(policies.opened(), 0);
    plugin.release();
    QVERIFY(daemon.waitUntilReady());
    QVERIFY(policies.opened() > 0);
    QVERIFY(QFile::exists(CameraMarker));
}

void TestSwitchFiles::announcementsDuringTheStartAreTaken()
{
    // The policy has no value yet when its switch changes, so it is enforced as off at first.
    Files::write(SwitchFile, LensOn);
    Files::write(CameraMarker, {});
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1}, false);
    plugin.hold(QStringLiteral("keyValue"));
    BusMonitor monitor;
    Daemon daemon;
    daemon.launch();
    QVERIFY(plugin.waitForCall(QStringLiteral("holding keyValue"))); // the old value, for the audit
    QVERIFY(QFile::exists(CameraMarker));
    const int mark = plugin.mark();
    plugin.hold(QStringLiteral("none"));
    QVERIFY(plugin.waitForCall(QStringLiteral("setKeyValue lens true"), mark));
    QVERIFY(daemon.waitUntilReady());
    QCOMPARE(Client().policy(QStringLiteral("CameraEnabled")), QVariant(true));
    monitor.settle();
    QCOMPARE(monitor.announcements(QStringLiteral("SwitchChanged")).size(), 0);
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 0);
}

QTEST_GUILESS_MAIN(TestSwitchFiles)
#include "tst_switchfiles.moc"
