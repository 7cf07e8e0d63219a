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
    void requestToEndDuringTheStartWaitsForItsEnd_data();
    void requestToEndDuringTheStartWaitsForItsEnd();
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
    QTest::newRow("with arguments")
        << texts({"sh", "-c", "exec \"$0\" --help --version -x /etc/policy/other.conf"});
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

void TestSurroundings::requestToEndDuringTheStartWaitsForItsEnd_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestSurroundings::requestToEndDuringTheStartWaitsForItsEnd()
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
    plugin.release();

    // Half a start would leave half of the policies enforced.
    QCOMPARE(daemon.waitForExit(), 0);
    monitor.settle();
    QVERIFY(!monitor.uniqueName(Service).isEmpty());
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(daemon.log(), usualLog());
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
    QCOMPARE(daemon.log(), usualLog());
}

QTEST_GUILESS_MAIN(TestSurroundings)
#include "tst_surroundings.moc"
