// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/govctl.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

/// How the client is called, and where its output goes.
class TestGovctlCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void wrongUsage_data();
    void wrongUsage();
    void emptyNames();
    void unknownPolicyGetsTheNearest();
    void optionsStandAnywhere();
    void helpIsText();
    void noProgramName();
    void noEnvironment();
    void colourOnlyOnATerminal();
    void linesFoldAtTheTerminalsWidth();
    void longNamesAreCut();
    void readerThatHasGone();
    void fullDisk();
    void closedOutput();
};

void TestGovctlCommandLine::init()
{
    Files::reset();
}

void TestGovctlCommandLine::wrongUsage_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *arguments, const char *message) {
        QTest::newRow(*arguments ? arguments : "nothing")
            << QString::fromLatin1(arguments) << QString::fromLatin1(message);
    };
    row("frobnicate", "unknown verb \"frobnicate\"; see govctl --help");
    row("help", "unknown verb \"help\"; see govctl --help");
    row("x", "unknown verb \"x\"; see govctl --help");
    row("lst", "unknown verb \"lst\"; did you mean list?");
    row("switch", "switch needs one of: list, get, set");
    row("switch lst", "unknown verb \"switch lst\"; did you mean switch list");
    row("list --ofx", "unknown option \"--ofx\"; did you mean --off?");
    row("list --xyz=1", "unknown option \"--xyz\"; see govctl --help");
    row("--nonsense list", "unknown option \"--nonsense\"; see govctl --help");
    row("s", "unknown verb \"s\"; did you mean set, switch list");
    row("list --json=no", "--json takes no value");
    row("list --color red", "--color takes auto, always, never, not \"red\"");
    row("get wifi", "unknown policy \"wifi\"; did you mean WlanEnabled?");
    row("status extra", "too many arguments; use: govctl status");
    row("list extra", "unknown policy \"extra\"");
    row("set CameraEnabled off --for ever", "--for takes a time like 90m");
    row("get", "too few arguments; use: govctl get KEY");
    row("set CameraEnabled", "too few arguments; use: govctl set KEY on|off");
    row("set CameraEnabled maybe", "a value is on or off");
    row("switch set radio 2", "a value is on or off");
    row("list --timeout", "--timeout needs a value; see govctl --help");
    row("list --timeout soon", "--timeout takes seconds, from 0.001 to 86400, not \"soon\"");
    row("list --timeout 0", "--timeout takes seconds");
    row("list --timeout -1", "--timeout takes seconds");
    row("list --timeout nan", "--timeout takes seconds");
    row("list --timeout inf", "--timeout takes seconds");
    row("list --timeout 1e9", "--timeout takes seconds");
    row("get CameraEnabled --exec x", "unknown option \"--exec\"");
    row("get NoPolicy", "unknown policy \"NoPolicy\"; \"govctl list --keys\" names them");
    row("get frobnicate", "unknown policy \"frobnicate\"; \"govctl list --keys\" names them");
    row("get PolicyType::CameraEnabled", "unknown policy");
    row("get cameraenabled", "unknown policy \"cameraenabled\"; did you mean CameraEnabled?");
}

void TestGovctlCommandLine::wrongUsage()
{
    QFETCH(QString, arguments);
    QFETCH(QString, message);
    Govctl govctl;
    const Outcome text = govctl.run(arguments);
    QCOMPARE(text.code, 2);
    QCOMPARE(text.out, QString());
    QCOMPARE(text.err.count(QLatin1Char('\n')), 1);
    QVERIFY2(text.err.startsWith(QStringLiteral("govctl: ") + message), qPrintable(text.err));

    const Outcome json = govctl.run(QStringLiteral("--json ") + arguments);
    QCOMPARE(json.code, 2);
    QVERIFY(!json.error().isEmpty());
}

void TestGovctlCommandLine::emptyNames()
{
    Govctl govctl;
    QCOMPARE(govctl.run(QStringList{QString()}).err,
             QStringLiteral("govctl: unknown verb \"\"; see govctl --help\n"));
    QCOMPARE(govctl.run({QStringLiteral("get"), QString()}).err,
             QStringLiteral("govctl: unknown policy \"\"; \"govctl list --keys\" names them\n"));
}

void TestGovctlCommandLine::unknownPolicyGetsTheNearest()
{
    Govctl govctl;
    const QJsonObject document = govctl.run(QStringLiteral("get CamraEnabled --json")).json();
    QCOMPARE(document.value(QStringLiteral("verb")), QJsonValue(QStringLiteral("get")));
    const QJsonObject error = document.value(QStringLiteral("error")).toObject();
    QCOMPARE(error.value(QStringLiteral("name")), QJsonValue(QStringLiteral("unknown-policy")));
    QCOMPARE(error.value(QStringLiteral("nearest")).toArray().first(),
             QJsonValue(QStringLiteral("CameraEnabled")));
    const Outcome nasty = govctl.run({QStringLiteral("get"), QStringLiteral("\033[31m\n")});
    QCOMPARE(nasty.code, 2);
    QVERIFY(!nasty.err.contains(QLatin1Char('\033')));
    QCOMPARE(nasty.err.count(QLatin1Char('\n')), 1);
}

void TestGovctlCommandLine::optionsStandAnywhere()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("radio"), {4}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    for (const char *arguments :
         {"--json --timeout 9 switch get radio", "switch --json get --timeout=9 radio",
          "switch get radio --timeout 9 --json", "--json switch get -- radio",
          "sw g radio --js --timeout 1 --timeout 9"}) {
        const Outcome outcome = govctl.run(QString::fromLatin1(arguments));
        QCOMPARE(outcome.result().value(QStringLiteral("value")), QJsonValue(true));
    }
}

void TestGovctlCommandLine::helpIsText()
{
    Govctl govctl;
    const Outcome all = govctl.run(QStringLiteral("--help --json"));
    QCOMPARE(all.code, 0);
    QVERIFY(all.out.contains(QStringLiteral("\nUsage: govctl VERB [options]\n")));
    const Outcome one = govctl.run(QStringLiteral("switch set --help"));
    QCOMPARE(one.code, 0);
    QVERIFY(
        one.out.contains(QStringLiteral("\nUsage: govctl switch set SWITCH on|off [options]\n")));
    QVERIFY(QRegularExpression(QStringLiteral("^govctl \\d+\\.\\d+\\.\\d+\n$"))
                .match(govctl.run(QStringLiteral("-v")).out)
                .hasMatch());
}

/// The kernel puts an empty name where the caller gives none at all.
void TestGovctlCommandLine::noProgramName()
{
    Govctl govctl;
    const Outcome named = govctl.shell(QStringLiteral("exec -a '' govctl list --keys"));
    QCOMPARE(named.code, 0);
    QVERIFY(named.lines().contains(QStringLiteral("CameraEnabled")));
    QCOMPARE(govctl.shell(QStringLiteral("exec -a '' govctl lst")).code, 2);
}

void TestGovctlCommandLine::noEnvironment()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.clearEnvironment();
    const Outcome bare = govctl.run(QStringLiteral("get CameraEnabled"));
    QCOMPARE(bare.out, QStringLiteral("on\n"));
    QCOMPARE(bare.err, QString());
}

void TestGovctlCommandLine::colourOnlyOnATerminal()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const QString onTerminal = QStringLiteral("script -qec 'govctl get CameraEnabled' /dev/null; "
                                              "script -qec 'govctl list' /dev/null");
    QVERIFY(govctl.run(QStringLiteral("list --color always")).out.contains(QLatin1Char('\033')));
    govctl.setEnvironment(QStringLiteral("TERM"), QStringLiteral("xterm"));
    QVERIFY(!govctl.shell(QStringLiteral("script -qec 'govctl list --color never' /dev/null"))
                 .out.contains(QLatin1Char('\033')));
    QVERIFY(govctl.shell(onTerminal).out.contains(QLatin1Char('\033')));
    QVERIFY(!govctl.run(QStringLiteral("list")).out.contains(QLatin1Char('\033')));
    govctl.setEnvironment(QStringLiteral("NO_COLOR"), QStringLiteral("1"));
    QVERIFY(!govctl.shell(onTerminal).out.contains(QLatin1Char('\033')));
    govctl.setEnvironment(QStringLiteral("NO_COLOR"), QString());
    govctl.setEnvironment(QStringLiteral("TERM"), QStringLiteral("dumb"));
    QVERIFY(!govctl.shell(onTerminal).out.contains(QLatin1Char('\033')));
}

void TestGovctlCommandLine::linesFoldAtTheTerminalsWidth()
{
    Govctl govctl;
    const Outcome narrow = govctl.shell(
        QStringLiteral("script -qec 'stty cols 40; govctl --help; govctl get x' /dev/null"));
    for (const QString &line : narrow.lines())
        QVERIFY2(line.trimmed().size() <= 40, qPrintable(line));
    const QStringList wide = govctl.run(QStringLiteral("--help")).lines();
    QVERIFY(
        std::any_of(wide.begin(), wide.end(), [](const auto &line) { return line.size() > 80; }));
}

void TestGovctlCommandLine::longNamesAreCut()
{
    Govctl govctl;
    const Outcome cut = govctl.run({QStringLiteral("get"), QString(5000, QLatin1Char('x'))});
    QCOMPARE(cut.code, 2);
    QVERIFY2(cut.err.size() < 200, qPrintable(cut.err));
}

void TestGovctlCommandLine::readerThatHasGone()
{
    Govctl govctl;
    for (const char *arguments : {"list --keys", "list --keys --json", "--help", "can"}) {
        // Whoever starts the client may have chosen to ignore the signal, or not.
        for (const char *trap : {"trap '' PIPE; ", ""}) {
            const Outcome gone =
                govctl.shell(QString::fromLatin1(trap) + PipeWithoutReader
                             + QStringLiteral("govctl %1 >&3").arg(QString::fromLatin1(arguments)));
            QCOMPARE(gone.code, 0);
            QCOMPARE(gone.err, QString());
        }
    }
}

void TestGovctlCommandLine::fullDisk()
{
    Govctl govctl;
    const Outcome full = govctl.shell(QStringLiteral("govctl list --keys >/dev/full"));
    QCOMPARE(full.code, 7);
    QVERIFY(full.err.startsWith(QStringLiteral("govctl: cannot write the result")));
    QCOMPARE(full.err.count(QLatin1Char('\n')), 1);
}

void TestGovctlCommandLine::closedOutput()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome closed =
        govctl.shell(QStringLiteral("govctl set CameraEnabled off >&- 2>&- <&-"));
    QCOMPARE(closed.code, 0);
    QCOMPARE(govctl.run(QStringLiteral("get CameraEnabled")).out, QStringLiteral("off\n"));
}

QTEST_GUILESS_MAIN(TestGovctlCommandLine)
#include "tst_govctlcommandline.moc"
