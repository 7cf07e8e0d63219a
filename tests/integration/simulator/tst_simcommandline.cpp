// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/sim.h"
#include "support/files.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

/// How the simulator is called.
class TestSimCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void wrongUsage_data();
    void wrongUsage();
    void unknownLabelGetsTheNearest();
    void onlyUnplugSuggestsLabels();
    void nearestInJson();
    void jsonNamesTheVerb_data();
    void jsonNamesTheVerb();
    void helpAndVersion();
    void optionsStandAnywhere();
};

void TestSimCommandLine::initTestCase()
{
    Sim::install();
    Files::reset();
}

void TestSimCommandLine::wrongUsage_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *arguments, const char *message) {
        QTest::newRow(*arguments ? arguments : "nothing")
            << QString::fromLatin1(arguments) << QString::fromLatin1(message);
    };
    row("", "no verb given; see govd-sim --help");
    row("stauts", "unknown verb \"stauts\"; did you mean status");
    row("frobnicate", "unknown verb \"frobnicate\"; known are device, status, services, ");
    row("--nonsense status", "Unknown option 'nonsense'; see govd-sim --help");
    row("launch --watch clock", "Unknown option 'watch'; see govd-sim --help");
    row("launch", "too few arguments; use: govd-sim launch APP");
    row("launch clock camera", "too many arguments; use: govd-sim launch APP");
    row("launch browser", "unknown APP \"browser\"; did you mean browserpwa, browserstandalone?");
    row("plug ubs", "unknown word \"ubs\"; did you mean usb?");
    row("certified maybe", "unknown word \"maybe\"; known are yes, no");
    row("stop adio", "unknown SERVICE \"adio\"; did you mean audio?");
    row("heal usbmods", "unknown SERVICE \"usbmods\"; did you mean usbmodes?");
    row("fail audio errr", "unknown word \"errr\"; did you mean error?");
    row("fail audio slow", "slow takes seconds, from 0 to 3600, not \"\"");
    row("fail audio slow soon", "slow takes seconds");
    row("fail audio slow -- -1", "slow takes seconds");
    row("fail audio slow nan", "slow takes seconds");
    row("fail audio slow 1e9", "slow takes seconds");
    row("fail audio error 3", "only slow takes seconds");
    row("expect", "too few arguments; use: govd-sim expect WHAT [NAME] VALUE");
    row("expect micro off", "unknown WHAT \"micro\"; did you mean microphone?");
    row("expect microphone", "too few arguments; use: govd-sim expect microphone on|off");
    row("expect microphone x on", "too many arguments; use: govd-sim expect microphone on|off");
    row("expect running clock", "too few arguments; use: govd-sim expect running APP yes|no");
    row("expect running clck no", "unknown APP \"clck\"; did you mean clock?");
    row("expect microphone yes", "unknown value \"yes\"; known are on, off");
    row("expect events many", "events is a number, not \"many\"");
    row("status --timeout soon", "--timeout takes seconds, from 0.001 to 86400, not \"soon\"");
    row("status --timeout 0", "--timeout takes seconds");
    row("status --timeout", "Missing value after '--timeout'; see govd-sim --help");
}

void TestSimCommandLine::wrongUsage()
{
    QFETCH(QString, arguments);
    QFETCH(QString, message);
    const Sim::Outcome text = Sim::run(arguments);
    QCOMPARE(text.code, 2);
    QCOMPARE(text.out, QString());
    QCOMPARE(text.err.count(QLatin1Char('\n')), 1);
    QVERIFY2(text.err.startsWith(QStringLiteral("govd-sim: ") + message), qPrintable(text.err));

    const Sim::Outcome json = Sim::run(QStringLiteral("--json ") + arguments);
    QCOMPARE(json.code, 2);
    QVERIFY(json.json().value(QStringLiteral("error")).isObject());
}

void TestSimCommandLine::unknownLabelGetsTheNearest()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label PHOTOS")).code, 0);
    const Sim::Outcome outcome = Sim::run(QStringLiteral("unplug PHOTSO"));
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.err,
             QStringLiteral("govd-sim: \"PHOTSO\" is not plugged in; did you mean PHOTOS?\n"));
}

void TestSimCommandLine::onlyUnplugSuggestsLabels()
{
    Sim device;
    QVERIFY(device.startDevice());
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label usbstick")).code, 0);
    QCOMPARE(Sim::run(QStringLiteral("plug usb --label a/b")).err,
             QStringLiteral("govd-sim: \"a/b\" cannot be a label\n"));
}

void TestSimCommandLine::nearestInJson()
{
    const QJsonObject error = Sim::run(QStringLiteral("stop storag --json"))
                                  .json()
                                  .value(QStringLiteral("error"))
                                  .toObject();
    QCOMPARE(error.value(QStringLiteral("name")), QJsonValue(QStringLiteral("unknown")));
    QCOMPARE(error.value(QStringLiteral("nearest")),
             QJsonValue(QJsonArray{QStringLiteral("storage")}));
}

void TestSimCommandLine::jsonNamesTheVerb_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QJsonValue>("verb");
    QTest::newRow("wrong argument") << "launch clck" << QJsonValue(QStringLiteral("launch"));
    QTest::newRow("wrong option") << "status --nonsense" << QJsonValue(QStringLiteral("status"));
    QTest::newRow("option before") << "--timeout x run A" << QJsonValue(QStringLiteral("run"));
    QTest::newRow("unknown verb") << "lunch clock" << QJsonValue(QJsonValue::Null);
    QTest::newRow("no verb") << "" << QJsonValue(QJsonValue::Null);
}

void TestSimCommandLine::jsonNamesTheVerb()
{
    QFETCH(QString, arguments);
    QFETCH(QJsonValue, verb);
    const Sim::Outcome outcome = Sim::run(QStringLiteral("--json ") + arguments);
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.json().value(QStringLiteral("verb")), verb);
}

void TestSimCommandLine::helpAndVersion()
{
    const Sim::Outcome help = Sim::run(QStringLiteral("--help"));
    QCOMPARE(help.code, 0);
    QVERIFY(help.out.startsWith(QStringLiteral("Usage: govd-sim VERB [options]\n")));
    const Sim::Outcome plug = Sim::run(QStringLiteral("plug --help"));
    QCOMPARE(plug.code, 0);
    QVERIFY(plug.out.startsWith(QStringLiteral("Usage: govd-sim plug [options] usb|card\n")));
    QVERIFY(plug.out.contains(QStringLiteral("--label <LABEL>")));
    const Sim::Outcome expect = Sim::run(QStringLiteral("expect --help"));
    QVERIFY(expect.out.startsWith(
        QStringLiteral("Usage: govd-sim expect [options] WHAT [NAME] VALUE\n")));
    const Sim::Outcome version = Sim::run(QStringLiteral("--version"));
    QCOMPARE(version.code, 0);
    QVERIFY(version.out.startsWith(QStringLiteral("govd-sim ")));
}

void TestSimCommandLine::optionsStandAnywhere()
{
    Sim device;
    QVERIFY(device.startDevice());
    for (const char *arguments :
         {"--json --timeout 9 plug usb --label A", "plug --label B --json usb",
          "plug usb --timeout=9 --json --label=C"}) {
        const QJsonObject document = Sim::run(QString::fromLatin1(arguments)).json();
        QCOMPARE(document.value(QStringLiteral("verb")), QJsonValue(QStringLiteral("plug")));
    }
    QCOMPARE(Sim::run(QStringLiteral("unplug -- B")).code, 0);
}

QTEST_GUILESS_MAIN(TestSimCommandLine)
#include "tst_simcommandline.moc"
