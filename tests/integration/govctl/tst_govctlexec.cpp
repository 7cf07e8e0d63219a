// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/govctl.h"
#include "support/caller.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/switchplugin.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Watching = QStringLiteral("watching org.kvt.PolicyManager\n");

QJsonObject resultOf(const QString &line)
{
    return validDocument(line.toUtf8()).value(QStringLiteral("result")).toObject();
}

} // namespace

/// The commands that "watch" runs.
class TestGovctlExec : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void runsACommand();
    void runsNothingOfAName();
    void takesACommandInAnyLocale();
    void tellsOfAFailingCommand();
    void commandsKeepTheOrder();
    void commandLeavesJsonAlone();
};

void TestGovctlExec::init()
{
    Files::reset();
}

void TestGovctlExec::runsACommand()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("--exec"),
                  QStringLiteral("echo \"ran $GOVCTL_KIND $GOVCTL_KEY $GOVCTL_VALUE\"")});
    QVERIFY(govctl.waitForErr(Watching));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.lines().value(1), QStringLiteral("ran policy CameraEnabled off"));
}

void TestGovctlExec::runsNothingOfAName()
{
    const QString name = QStringLiteral("$(touch /tmp/pwned); `touch /tmp/pwned` \"'\n");
    SwitchPlugin plugin;
    plugin.setSwitch(name, {}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("--exec"),
                  QStringLiteral("printf %s \"$GOVCTL_KEY\" >/tmp/key")});
    QVERIFY(govctl.waitForErr(Watching));
    plugin.announce(name, false);
    QCOMPARE(govctl.finish().code, 0);
    QCOMPARE(Files::read(QStringLiteral("/tmp/key")), name.toUtf8());
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/pwned")));
}

void TestGovctlExec::takesACommandInAnyLocale()
{
    const QByteArray umlaut = "\xc3\xbc";
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.setEnvironment(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("--exec"),
                  QString::fromUtf8("printf %s '" + umlaut + "' >/tmp/umlaut")});
    QVERIFY(govctl.waitForErr(Watching));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    QCOMPARE(govctl.finish().code, 0);
    QCOMPARE(Files::read(QStringLiteral("/tmp/umlaut")), umlaut);
}

void TestGovctlExec::tellsOfAFailingCommand()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    for (const auto &[command, complaint] :
         {std::pair("exit 3", "exit code 3"), std::pair("kill -9 $$", "ended by signal 9")}) {
        Govctl govctl;
        govctl.start({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("--exec"),
                      QString::fromLatin1(command)});
        QVERIFY(govctl.waitForErr(Watching));
        QVERIFY(
            !Caller().setPolicy(Camera, command == QByteArray("exit 3") ? false : true).isError());
        const Outcome outcome = govctl.finish();
        QCOMPARE(outcome.code, 0);
        QVERIFY2(outcome.err.contains(QString::fromLatin1(complaint)), qPrintable(outcome.err));
    }
}

/// Each command waits for a pass of the test's, so the events behind it have to wait as well.
void TestGovctlExec::commandsKeepTheOrder()
{
    const QString pass = QStringLiteral("/tmp/pass");
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--exec"),
                  QStringLiteral("until rm /tmp/pass 2>/dev/null; do sleep 0.01; done; "
                                 "echo \"ran $GOVCTL_VALUE\"")});
    QVERIFY(govctl.waitForErr(Watching));
    for (const bool value : {false, true, false})
        QVERIFY(!Caller().setPolicy(Camera, value).isError());
    for (int i = 0; i < 3; ++i) {
        Files::write(pass, QByteArray());
        QTRY_VERIFY(!QFile::exists(pass));
    }
    QTRY_COMPARE(govctl.out().split(QLatin1Char('\n')).filter(QStringLiteral("ran ")),
                 (QStringList{QStringLiteral("ran off"), QStringLiteral("ran on"),
                              QStringLiteral("ran off")}));
}

void TestGovctlExec::commandLeavesJsonAlone()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("--json"),
                  QStringLiteral("--exec"), QStringLiteral("echo noise")});
    QVERIFY(govctl.waitForErr(Watching));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.lines().size(), 1);
    QVERIFY(!resultOf(outcome.lines().first()).isEmpty());
    QVERIFY(outcome.err.contains(QStringLiteral("noise\n")));
}

QTEST_GUILESS_MAIN(TestGovctlExec)
#include "tst_govctlexec.moc"
