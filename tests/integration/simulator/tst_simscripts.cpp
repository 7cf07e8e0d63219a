// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Examples = QStringLiteral("/usr/share/govd-sim/examples");
const QString Script = QStringLiteral("/tmp/test.sim");

Sim::Outcome runScript(const QByteArray &text, const QString &options = QString())
{
    Files::write(Script, text);
    return Sim::run(QStringLiteral("run %1 %2").arg(options, Script));
}

} // namespace

/// Scripts: those that are shipped with the real daemon, and those that fail.
class TestSimScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void examples_data();
    void examples();
    void examplesNeedTheDaemon_data();
    void examplesNeedTheDaemon();
    void failingLineEndsTheScript();
    void govctlLineCanFail();
    void badLines_data();
    void badLines();
    void unreadable_data();
    void unreadable();
    void jsonOnly();
    void timeoutIsForEachLine();
    void timeoutIsForLinesOfGovctl_data();
    void timeoutIsForLinesOfGovctl();
    void warningsOfGovctlAreShown();
};

void TestSimScripts::initTestCase()
{
    Sim::install();
}

void TestSimScripts::init()
{
    Files::reset();
}

void TestSimScripts::examples_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names = QDir(Examples).entryList({QStringLiteral("*.sim")});
    QVERIFY(names.size() >= 5);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

/// One of them wants the daemon to begin without a service, the others want it there.
void TestSimScripts::examples()
{
    QFETCH(QString, name);
    Sim device;
    QVERIFY(device.startDevice());
    if (name == QLatin1String("service-comes-back.sim"))
        QCOMPARE(Sim::run(QStringLiteral("stop audio")).code, 0);
    Daemon daemon;
    QVERIFY(daemon.start());
    const Sim::Outcome outcome =
        Sim::run(QStringLiteral("run --timeout 60 %1/%2").arg(Examples, name));
    QVERIFY2(outcome.code == 0, qPrintable(outcome.out + outcome.err));
}

void TestSimScripts::examplesNeedTheDaemon_data()
{
    examples_data();
}

void TestSimScripts::examplesNeedTheDaemon()
{
    QFETCH(QString, name);
    Sim device;
    QVERIFY(device.startDevice());
    const Sim::Outcome outcome =
        Sim::run(QStringLiteral("run --timeout 0.2 %1/%2").arg(Examples, name));
    QVERIFY(outcome.code == 1 || outcome.code == 5);
}

void TestSimScripts::failingLineEndsTheScript()
{
    Sim device;
    QVERIFY(device.startDevice());
    const Sim::Outcome outcome = runScript("# first\n\nlaunch clock\n"
                                           "  expect running camera yes --timeout 0.2\n"
                                           "launch messages\n");
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.err,
             QStringLiteral("govd-sim: /tmp/test.sim, line 4, \"expect running camera yes "
                            "--timeout 0.2\": running camera is no, not yes, after 0.2 s\n"));
    QCOMPARE(outcome.lines(),
             QStringList({QStringLiteral("  3  launch clock"),
                          QStringLiteral("  4  expect running camera yes --timeout 0.2")}));
    QCOMPARE(Sim::run(QStringLiteral("expect running messages no")).code, 0);
}

void TestSimScripts::govctlLineCanFail()
{
    Sim device;
    QVERIFY(device.startDevice());
    const Sim::Outcome outcome = runScript("govctl set CamraEnabled off\n");
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.err,
             QStringLiteral("govd-sim: /tmp/test.sim, line 1, \"govctl set CamraEnabled off\": "
                            "unknown policy \"CamraEnabled\"; did you mean CameraEnabled?\n"));
    QCOMPARE(runScript("govctl get CameraEnabled\n").code, 5);
    const Sim::Outcome missing =
        Sim::shell(QStringLiteral("PATH=/nowhere $SIM run %1").arg(Script));
    QCOMPARE(missing.code, 2);
    QVERIFY(missing.err.contains(QStringLiteral("govctl cannot be started; install it")));
}

void TestSimScripts::badLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *line, const char *reason) {
        QTest::newRow(line) << QString::fromLatin1(line) << QString::fromLatin1(reason);
    };
    row("lunch clock", "unknown verb \"lunch\"; did you mean launch?");
    row("launch clck", "unknown APP \"clck\"; did you mean clock?");
    row("plug usb --label \"A", "a quotation mark is missing");
    row("device", "this cannot stand in a script");
    row("run other.sim", "this cannot stand in a script");
    row("status --watch", "this cannot stand in a script");
    row("--help", "this cannot stand in a script");
    row("govd-sim", "no verb given; see govd-sim --help");
    row("\"\"", "no verb given; see govd-sim --help");
}

/// Told before anything is run.
void TestSimScripts::badLines()
{
    QFETCH(QString, line);
    QFETCH(QString, reason);
    Sim device;
    QVERIFY(device.startDevice());
    const Sim::Outcome outcome = runScript("govd-sim launch camera\n" + line.toUtf8() + '\n');
    QCOMPARE(outcome.code, 2);
    const QString start =
        QStringLiteral("govd-sim: /tmp/test.sim, line 2, \"%1\": %2").arg(line, reason);
    QVERIFY2(outcome.err.startsWith(start), qPrintable(outcome.err));
    QCOMPARE(outcome.err.count(QLatin1Char('\n')), 1);
    QCOMPARE(Sim::run(QStringLiteral("expect running camera no")).code, 0);
}

void TestSimScripts::unreadable_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << "/tmp/nowhere.sim";
    QTest::newRow("directory") << "/tmp";
}

void TestSimScripts::unreadable()
{
    QFETCH(QString, path);
    const Sim::Outcome outcome = Sim::run(QStringLiteral("run ") + path);
    QCOMPARE(outcome.code, 2);
    QVERIFY(outcome.err.startsWith(QStringLiteral("govd-sim: cannot read the script \"")));
    QVERIFY(outcome.err.endsWith(QStringLiteral("check its name and rights\n")));
    QCOMPARE(outcome.err.count(QLatin1Char('\n')), 1);
}

void TestSimScripts::jsonOnly()
{
    Sim device;
    QVERIFY(device.startDevice());
    Files::write(Script, "launch clock\ngovctl get CameraEnabled\n");
    Sim sim;
    sim.start({QStringLiteral("run"), QStringLiteral("--json"), Script});
    const Sim::Outcome outcome = sim.finish();
    QCOMPARE(outcome.code, 5);
    QCOMPARE(outcome.err, QString());
    QCOMPARE(sim.results().size(), outcome.lines().size());
    QCOMPARE(sim.results().first().value(QStringLiteral("line")), QJsonValue(1));
}

void TestSimScripts::timeoutIsForEachLine()
{
    Sim device;
    QVERIFY(device.startDevice());
    const Sim::Outcome outcome = runScript("expect camera on\n", QStringLiteral("--timeout 0.3"));
    QVERIFY(outcome.err.endsWith(QStringLiteral("after 0.3 s\n")));
}

void TestSimScripts::timeoutIsForLinesOfGovctl_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("seconds");
    QTest::newRow("none") << QByteArray("govctl get CameraEnabled") << "0.3";
    QTest::newRow("its own") << QByteArray("govctl get CameraEnabled --timeout 0.2") << "0.2";
    QTest::newRow("its own, in one word") << QByteArray("govctl --timeout=0.2 status") << "0.2";
}

void TestSimScripts::timeoutIsForLinesOfGovctl()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, seconds);
    Daemon daemon;
    QVERIFY(daemon.start());
    daemon.pause();
    const Sim::Outcome outcome = runScript(line + '\n', QStringLiteral("--timeout 0.3"));
    QCOMPARE(outcome.code, 6);
    QVERIFY2(outcome.err.contains(QStringLiteral(": no answer within %1 s;").arg(seconds)),
             qPrintable(outcome.err));
    daemon.resume();
}

/// Whether the line succeeds or not; what it failed of stands in the failure alone.
void TestSimScripts::warningsOfGovctlAreShown()
{
    Files::write(
        QStringLiteral("/tmp/stand-in/govctl"),
        "#!/bin/sh\necho warning >&2\n[ \"$1\" = well ] || { echo govctl: end >&2; exit 3; }\n");
    QVERIFY(QFile::setPermissions(QStringLiteral("/tmp/stand-in/govctl"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    Files::write(Script, "govctl well\ngovctl badly\n");
    const Sim::Outcome outcome =
        Sim::shell(QStringLiteral("PATH=/tmp/stand-in:$PATH; export PATH; $SIM run ") + Script);
    QCOMPARE(outcome.code, 3);
    QCOMPARE(outcome.err,
             QStringLiteral("warning\nwarning\n"
                            "govd-sim: /tmp/test.sim, line 2, \"govctl badly\": end\n"));
}

QTEST_GUILESS_MAIN(TestSimScripts)
#include "tst_simscripts.moc"
