// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/govctl.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

namespace {

const QString Answer = QStringLiteral("/tmp/answer");

/// Sets up bash, and a command that is completed as the client is and notes its arguments down.
const QByteArray Setup = "source /usr/share/bash-completion/completions/govctl\n"
                         "show() { printf '%s\\n' \"$@\" >/tmp/answer; }\n"
                         "complete -F _govctl show\n"
                         "bind 'set bell-style none'\n";

} // namespace

/// What the Tab key makes of a line.
class TestGovctlCompletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void bashCompletes_data();
    void bashCompletes();
    void completionIsJsonToo();
};

void TestGovctlCompletion::init()
{
    Files::reset();
    QFile::remove(Answer);
}

void TestGovctlCompletion::bashCompletes_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QByteArray>("arguments");
    const auto row = [](const char *keys, const char *arguments) {
        QTest::newRow(keys) << QByteArray(keys) << QByteArray(arguments);
    };
    row("sta\t", "status");
    row("get Camera\t", "get|CameraEnabled");
    row("watch --on\t", "watch|--once");
    row("set CameraEnabled o\tn", "set|CameraEnabled|on");
    row("--timeout=3 get Cam\t", "--timeout=3|get|CameraEnabled");
    row("--timeout 3 get Cam\t", "--timeout|3|get|CameraEnabled");
    row("get 'Cam\t", "get|CameraEnabled");
    row("swit\tget Par\t", "switch|get|Parental control");
    row("switch get \"Par\t", "switch|get|Parental control");
    row("switch get 'Parental c\t", "switch|get|Parental control");
    row("switch get Parental\\ c\t", "switch|get|Parental control");
    row("switch get \"Par\"ental\\ c\t", "switch|get|Parental control");
    row("switch get Par'ental c\t", "switch|get|Parental control");
    row("switch get \"Parental control\" --qu\t", "switch|get|Parental control|--quiet");
    row("switch get co:\t", "switch|get|co:lon");
    row("switch get co:l\t", "switch|get|co:lon");
    row("switch get 'co:\t", "switch|get|co:lon");
    row("switch get co\\:l\t", "switch|get|co:lon");
    row("switch get a\t", "switch|get|a=b: c");
    row("switch get a=\t", "switch|get|a=b: c");
    row("switch get a=b:\\ \t", "switch|get|a=b: c");
    row("switch get \"\\$\t", "switch|get|$(id) \"'x");
    row("switch get \\$\t", "switch|get|$(id) \"'x");
    row("switch get '$\t", "switch|get|$(id) \"'x");
}

/// Types the keys into a shell on a terminal.
void TestGovctlCompletion::bashCompletes()
{
    QFETCH(QByteArray, keys);
    QFETCH(QByteArray, arguments);
    SwitchPlugin plugin;
    for (const char *name : {"Parental control", "co:lon", "a=b: c", "$(id) \"'x"})
        plugin.setSwitch(QString::fromLatin1(name), {4}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Files::write(QStringLiteral("/tmp/setup"), Setup);
    Files::write(QStringLiteral("/tmp/keys"), "show " + keys + "\nexit\n");

    Govctl govctl;
    govctl.setEnvironment(QStringLiteral("TERM"), QStringLiteral("xterm"));
    govctl.setEnvironment(QStringLiteral("INPUTRC"), QStringLiteral("/dev/null"));
    const Outcome terminal = govctl.shell(QStringLiteral(
        "script -qec 'bash --noprofile --rcfile /tmp/setup -i' /dev/null </tmp/keys"));
    QVERIFY2(Files::read(Answer).trimmed().replace('\n', '|') == arguments,
             qPrintable(terminal.out));
}

void TestGovctlCompletion::completionIsJsonToo()
{
    Govctl govctl;
    const QJsonArray candidates = govctl.run(QStringLiteral("complete --json -- get Camera"))
                                      .result()
                                      .value(QStringLiteral("candidates"))
                                      .toArray();
    QCOMPARE(candidates.size(), 1);
    QCOMPARE(candidates[0].toObject().value(QStringLiteral("word")),
             QJsonValue(QStringLiteral("CameraEnabled")));
}

QTEST_GUILESS_MAIN(TestGovctlCompletion)
#include "tst_govctlcompletion.moc"
