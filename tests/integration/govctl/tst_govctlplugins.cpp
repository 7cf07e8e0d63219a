// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/govctl.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/lockplugin.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

namespace {

const QString File = QStringLiteral("/etc/govd/filelock.conf");
const QString Library = LockPlugin::directory() + QStringLiteral("filelock.so");

/// The JSON that "govctl status" and "govctl dump" have for the only plugin.
QJsonObject pluginIn(const QJsonObject &result)
{
    return result.value(QStringLiteral("plugins")).toArray().at(0).toObject();
}

} // namespace

/// What "govctl status" tells of the files that plugins go by, shown with the one that lists locks.
class TestGovctlPlugins : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void tellsWhatIsInForce_data();
    void tellsWhatIsInForce();
    void followsTheFile();
    void withoutPluginsThereIsNothingToTell();
    void withoutADaemonNothingIsKnown();
    void directoryThatThisUserMayNotRead();
    void namesAreNoCommandsToATerminal();
};

void TestGovctlPlugins::init()
{
    Files::reset();
    QVERIFY(QDir().mkpath(QStringLiteral("/etc/govd")));
    Files::write(Library, Files::read(QStringLiteral(GOVD_FILELOCK)));
}

void TestGovctlPlugins::cleanup()
{
    QVERIFY(QDir(QStringLiteral("/etc/govd")).removeRecursively());
    QFile::remove(Library);
}

void TestGovctlPlugins::tellsWhatIsInForce_data()
{
    QTest::addColumn<QStringList>("contents"); // one for each start; "-" for none
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("code");
    const QString good = QStringLiteral("[lock]\npolicies=\n");
    const auto row = [](const char *state, const QStringList &contents, const char *text,
                        int code) {
        QTest::newRow(state) << contents << QString::fromLatin1(state) << QString::fromLatin1(text)
                             << code;
    };
    row("good", {good}, "is good: it is in force", 0);
    row("absent", {QStringLiteral("-")}, "is not there: nothing is in force", 0);
    row("kept", {good, QString()}, "is empty: its last good content is in force", 1);
    row("never-good", {QString()}, "is empty, and no good content is known: nothing is in force",
        1);
}

void TestGovctlPlugins::tellsWhatIsInForce()
{
    QFETCH(QStringList, contents);
    QFETCH(QString, state);
    QFETCH(QString, text);
    QFETCH(int, code);
    Daemon daemon;
    for (const QString &content : contents) {
        if (daemon.isRunning())
            QCOMPARE(daemon.stop(), 0);
        if (content != QLatin1String("-"))
            Files::write(File, content.toUtf8());
        QVERIFY(daemon.start());
    }
    const QString message = File + QLatin1Char(' ') + text;

    Govctl guest(Identity::of("guest"));
    const Outcome outcome = guest.run(QStringLiteral("status"));
    QCOMPARE(outcome.code, code);
    QVERIFY(outcome.lines().contains(QLatin1String("plugin    filelock: ") + message));
    const QJsonObject expected{{QStringLiteral("name"), QStringLiteral("filelock")},
                               {QStringLiteral("state"), state},
                               {QStringLiteral("message"), message}};
    QCOMPARE(pluginIn(guest.run(QStringLiteral("status --json")).result()), expected);
    QCOMPARE(pluginIn(guest.run(QStringLiteral("dump --json")).result()), expected);
}

void TestGovctlPlugins::followsTheFile()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const auto state = [&] {
        return pluginIn(govctl.run(QStringLiteral("status --json")).result())
            .value(QStringLiteral("state"))
            .toString();
    };
    QCOMPARE(state(), QStringLiteral("absent"));
    Files::replace(File, "[lock]\npolicies=\n");
    QTRY_COMPARE(state(), QStringLiteral("good"));
    Files::replace(File, "no key file\n");
    QTRY_COMPARE(state(), QStringLiteral("kept"));
    QVERIFY(QFile::remove(File));
    QTRY_COMPARE(state(), QStringLiteral("absent"));
}

void TestGovctlPlugins::withoutPluginsThereIsNothingToTell()
{
    QVERIFY(QFile::remove(Library));
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    QVERIFY(!govctl.run(QStringLiteral("status")).out.contains(QStringLiteral("plugin")));
    QCOMPARE(govctl.run(QStringLiteral("status --json")).result().value(QStringLiteral("plugins")),
             QJsonValue(QJsonArray()));
}

/// What a daemon has left behind says nothing about now.
void TestGovctlPlugins::withoutADaemonNothingIsKnown()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.stop(), 0);
    Govctl govctl;
    QCOMPARE(govctl.run(QStringLiteral("status")).out, QStringLiteral("service   not there\n"));
    QVERIFY(govctl.run(QStringLiteral("status --json"))
                .result()
                .value(QStringLiteral("plugins"))
                .isNull());
}

void TestGovctlPlugins::directoryThatThisUserMayNotRead()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::setPermissions(QStringLiteral("/run/govd"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    Govctl guest(Identity::of("guest"));
    const Outcome outcome = guest.run(QStringLiteral("status"));
    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.lines().contains(
        QStringLiteral("plugins   not known: this user may not read /run/govd")));
    QVERIFY(guest.run(QStringLiteral("status --json"))
                .result()
                .value(QStringLiteral("plugins"))
                .isNull());
}

void TestGovctlPlugins::namesAreNoCommandsToATerminal()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Files::write(QStringLiteral("/run/govd/zz.json"),
                 R"({"name": "a\u001b[31m", "state": "good", "message": "two\nlines"})");
    const Outcome outcome = Govctl().run(QStringLiteral("status"));
    QVERIFY(!outcome.out.contains(QChar(0x1b)));
    QCOMPARE(outcome.lines().filter(QStringLiteral("plugin ")).size(), 2);
}

QTEST_GUILESS_MAIN(TestGovctlPlugins)
#include "tst_govctlplugins.moc"
