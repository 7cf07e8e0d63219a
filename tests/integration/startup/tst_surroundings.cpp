// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/bus.h"
#include "support/busmonitor.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include <QtTest>

#include <signal.h>

using namespace Support;

namespace {

/// What the log of a start holds where no neighbour is on the bus, and nothing else.
QStringList usualLog()
{
    return texts({"warning|default|Failed to disable USB devices connection.",
                  "warning|default|Failed to disable USB devices connection."});
}

} // namespace

/// What the process is given by whoever starts it, and how it takes its end.
class TestSurroundings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void serviceIsTheSameWhateverTheSurroundings_data();
    void serviceIsTheSameWhateverTheSurroundings();
    void nothingIsWrittenIntoTheCurrentDirectory();
    void filesAreReadWhateverTheirNames_data();
    void filesAreReadWhateverTheirNames();
    void signalDuringTheStartEndsIt_data();
    void signalDuringTheStartEndsIt();
    void signalWaitsForSeeds();
    void signalIsNotBlockedInChildren();
    void hangupEnforcesAllPoliciesOnceMore();
    void argumentsAreRefused_data();
    void argumentsAreRefused();
    void anEndTakesNothingBack();
    void lossOfTheBusIsNoFailure();
};

void TestSurroundings::init()
{
    Files::reset();
}

void TestSurroundings::serviceIsTheSameWhateverTheSurroundings_data()
{
    QTest::addColumn<QStringList>("wrapper");
    QTest::newRow("no home directory") << texts({"env", "-u", "HOME"});
    QTest::newRow("home directory that is not there") << texts({"env", "HOME=/nonexistent"});
    QTest::newRow("no locale") << texts({"env", "-u", "LANG"});
    QTest::newRow("unknown locale") << texts({"env", "LC_ALL=xx_YY.UTF-8"});
    QTest::newRow("next to nothing in the environment")
        << texts({"env", "-u", "HOME", "-u", "LANG", "-u", "PATH", "-u", "TERM"});
    QTest::newRow("in the root directory") << texts({"env", "--chdir=/"});
    QTest::newRow("in a directory that is gone")
        << texts({"sh", "-c", "mkdir /tmp/gone && cd /tmp/gone && rmdir /tmp/gone && exec \"$0\""});
    QTest::newRow("without standard input and output")
        << texts({"sh", "-c", "exec \"$0\" <&- >&-"});
}

void TestSurroundings::serviceIsTheSameWhateverTheSurroundings()
{
    QFETCH(const QStringList, wrapper);
    Files::write(PolicyFile, "[policy]\nMicrophoneEnabled=false\n");
    Daemon daemon;
    daemon.setWrapper(wrapper);
    QVERIFY(daemon.start());

    Client client;
    QCOMPARE(client.policy(QStringLiteral("MicrophoneEnabled")), QVariant(false));
    QVERIFY(client.setPolicy(QStringLiteral("CameraEnabled"), false));
    QCOMPARE(client.policy(QStringLiteral("CameraEnabled")), QVariant(false));
    QVERIFY(!QFile::exists(CameraMarker));
    const QMap<QString, QString> values = Files::values(PolicyFile);
    QCOMPARE(values.value(QStringLiteral("MicrophoneEnabled")), QStringLiteral("false"));
    QCOMPARE(values.value(QStringLiteral("CameraEnabled")), QStringLiteral("false"));
    QCOMPARE(daemon.stop(), 0);
    QCOMPARE(daemon.log(), usualLog());
}

void TestSurroundings::nothingIsWrittenIntoTheCurrentDirectory()
{
    const QTemporaryDir directory;
    Daemon daemon;
    daemon.setWrapper({QStringLiteral("env"), QLatin1String("--chdir=") + directory.path()});
    QVERIFY(daemon.start());
    QVERIFY(Client().setPolicy(QStringLiteral("CameraEnabled"), false));
    QCOMPARE(daemon.stop(), 0);
    QCOMPARE(
        QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList());
}

void TestSurroundings::filesAreReadWhateverTheirNames_data()
{
    QTest::addColumn<QStringList>("wrapper");
    QTest::newRow("locale of UTF-8") << texts({"env", "LC_ALL=C.UTF-8"});
    QTest::newRow("no locale") << texts({"env", "-u", "LANG"});
    QTest::newRow("locale of ASCII") << texts({"env", "LC_ALL=C"});
}

void TestSurroundings::filesAreReadWhateverTheirNames()
{
    QFETCH(const QStringList, wrapper);
    Files::write(QStringLiteral("/etc/policy/policy.d/f\u00fcr alle.conf"),
                 "[policy]\nCameraEnabled=false\n");
    Daemon daemon;
    daemon.setWrapper(wrapper);
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(QStringLiteral("CameraEnabled")), QVariant(false));
}

void TestSurroundings::signalDuringTheStartEndsIt_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestSurroundings::signalDuringTheStartEndsIt()
{
    QFETCH(const int, signal);
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("lens"), {1}, true);
    plugin.hold(QStringLiteral("keyValue"));
    BusMonitor monitor;
    Daemon daemon;
    daemon.launch();
    QVERIFY(plugin.waitForCall(QStringLiteral("holding keyValue")));
    QCOMPARE(kill(static_cast<pid_t>(daemon.processId()), signal), 0);

    // The plugin still waits: nothing that the start waits for keeps the daemon from its end.
    QCOMPARE(daemon.waitForExit(), -1);
    monitor.settle();
    QVERIFY(monitor.uniqueName(Service).isEmpty());
    plugin.release();
    QVERIFY(daemon.start());
}

/// Once there is a policy file the seeds are not looked at any more: none of them may be lost.
void TestSurroundings::signalWaitsForSeeds()
{
    Files::write(QStringLiteral("/etc/policy/policy.d/seed.conf"),
                 "[policy]\nCameraEnabled=true\nDeveloperShellEnabled=false\n");
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("lens"), {1}, true);
    plugin.hold(QStringLiteral("keyValue"));
    Daemon daemon;
    daemon.launch();
    QVERIFY(plugin.waitForCall(QStringLiteral("holding keyValue"))); // about the first of them
    QCOMPARE(kill(static_cast<pid_t>(daemon.processId()), SIGTERM), 0);
    plugin.release();
    QCOMPARE(daemon.waitForExit(), -1);
    QCOMPARE(Files::values(PolicyFile).value(QStringLiteral("DeveloperShellEnabled")), No);
}

void TestSurroundings::signalIsNotBlockedInChildren()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    const QByteArray status =
        Files::read(QStringLiteral("/proc/%1/status").arg(daemon.processId()));
    QVERIFY2(status.contains("\nSigBlk:\t0000000000000000\n"), status.constData());
}

void TestSurroundings::hangupEnforcesAllPoliciesOnceMore()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QVERIFY(client.setPolicy(QStringLiteral("DeveloperShellEnabled"), false));
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    for (int i = 0; i < 2; ++i) {
        QVERIFY(QFile::remove(CameraMarker));
        QVERIFY(QFile::remove(DeveloperShellMarker));
        QCOMPARE(kill(static_cast<pid_t>(daemon.processId()), SIGHUP), 0);
        QTRY_VERIFY(QFile::exists(CameraMarker) && QFile::exists(DeveloperShellMarker));
    }
    QCOMPARE(client.policy(QStringLiteral("CameraEnabled")), QVariant(true)); // no file was read
}

void TestSurroundings::argumentsAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::newRow("help") << texts({"--help"}) << 0;
    QTest::newRow("version") << texts({"--version"}) << 0;
    QTest::newRow("unknown option") << texts({"-x"}) << 2;
    QTest::newRow("file") << texts({"/etc/policy/other.conf"}) << 2;
    QTest::newRow("empty text") << texts({""}) << 2;
}

/// Nothing is enforced: no file is there afterwards, and the name stays free.
void TestSurroundings::argumentsAreRefused()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const int, code);
    QProcess process;
    process.start(QStringLiteral("/usr/sbin/govd"), arguments);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), code);
    QCOMPARE(process.readAllStandardOutput().isEmpty(), code != 0);
    QCOMPARE(process.readAllStandardError().isEmpty(), code == 0);
    QVERIFY(!QFile::exists(PolicyFile));
    QVERIFY(!QFile::exists(CameraMarker));
}

void TestSurroundings::anEndTakesNothingBack()
{
    BusMonitor monitor;
    Bus bus;
    Daemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot before = Files::snapshot(PolicyFile);
    monitor.settle();
    const QString own = monitor.uniqueName(Service);
    monitor.clear();

    QCOMPARE(daemon.stop(), 0);
    QVERIFY(bus.waitForNoOwner(Service));
    monitor.settle();
    // The name goes with the connection, and what is enforced stays so.
    QCOMPARE(monitor.calls(QStringLiteral("ReleaseName")).size(), 0);
    const auto said = monitor.messages([&](const BusMessage &message) {
        return message.sender == own && message.type != BusMessage::Return
            && message.member != QLatin1String("RemoveMatch");
    });
    QCOMPARE(said.size(), 0);
    QVERIFY(Files::snapshot(PolicyFile) == before);
    QVERIFY(QFile::exists(CameraMarker));
}

void TestSurroundings::lossOfTheBusIsNoFailure()
{
    Bus bus;
    Daemon daemon;
    QVERIFY(daemon.start());
    // The bus library itself can abort when the bus goes while a call waits, so let it rest.
    BusMonitor().settle();
    bus.stop();
    QCOMPARE(daemon.waitForExit(), 0);
    QCOMPARE(daemon.log(),
             usualLog() << QStringLiteral("warning|default|Lost the connection to the system bus"));
}

QTEST_GUILESS_MAIN(TestSurroundings)
#include "tst_surroundings.moc"
