// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/mount.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");
const QString NotSaved = QStringLiteral("warning|default|Failed to save configuration to file "
                                        "\"/etc/policy/switch.conf\"");

} // namespace

/// The file of the access switches, and what happens when it cannot be written.
class TestSwitchSaving : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void fileKeepsWhatItHolds();
    void failures_data();
    void failures();
    void malformedFileIsLeftAsItIs();
    void keyThatTheFileCannotHold_data();
    void keyThatTheFileCannotHold();
    void keyForTheLibraryIsTakenBehindAnotherGroup();
    void savingWorksAgain();
};

void TestSwitchSaving::init()
{
    Files::reset();
}

void TestSwitchSaving::fileKeepsWhatItHolds()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    plugin.setSwitch(QStringLiteral("new"), {}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(SwitchFile,
                 "# a comment\n[other]\ncellular=7\n\n[policy]\nunknown=yes\n"
                 "cellular=1\nlast=true\n");

    QCOMPARE(Caller().setSwitch(Cellular, true).value(), QVariant(true));
    QCOMPARE(Caller().setSwitch(QStringLiteral("new"), false).value(), QVariant(true));
    QCOMPARE(Files::read(SwitchFile),
             QByteArray("[other]\ncellular=7\n\n[policy]\nunknown=yes\ncellular=true\nlast=true\n"
                        "new=false\n"));
}

void TestSwitchSaving::failures_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("on") << true;
    QTest::newRow("off") << false;
}

/// The plugin keeps the new value, and what it has announced is not taken back.
void TestSwitchSaving::failures()
{
    QFETCH(bool, value);
    const QString text = value ? QStringLiteral("true") : QStringLiteral("false");
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, !value);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setSwitch(Cellular, !value).value(), QVariant(true));
    const FileSnapshot before = Files::snapshot(SwitchFile);
    daemon.forget();

    const Mount disk = Mount::readOnly(QStringLiteral("/etc/policy"));
    const Reply reply = Caller().setSwitch(Cellular, value);
    QVERIFY(!reply.isError());
    QCOMPARE(reply.value(), QVariant(false));

    const QStringList log = daemon.logged();
    QCOMPARE(log.size(), 2);
    QVERIFY(log.at(0).startsWith(QLatin1String("warning|default|Error saving key file ")));
    QCOMPARE(log.at(1), NotSaved);
    QCOMPARE(daemon.messages().filter(QStringLiteral("Changed")),
             (QStringList{QLatin1String("PolicyChanged CameraEnabled ") + text,
                          QLatin1String("SwitchChanged cellular ") + text}));
    QVERIFY(!daemon.messages().join(QString()).contains(QStringLiteral("sendEventStringAlt")));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(plugin.value(Cellular), QJsonValue(value));
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(value));
    QCOMPARE(QFile::exists(CameraMarker), value);
    QCOMPARE(Files::snapshot(SwitchFile), before);
}

void TestSwitchSaving::malformedFileIsLeftAsItIs()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(SwitchFile, "no key file\n");
    const FileSnapshot before = Files::snapshot(SwitchFile);
    daemon.forget();

    QCOMPARE(Caller().setSwitch(Cellular, false).value(), QVariant(false));
    const QStringList log = daemon.logged();
    QCOMPARE(log.size(), 2);
    QVERIFY(log.at(0).startsWith(QLatin1String("warning|default|Error loading key file ")));
    QCOMPARE(log.at(1), NotSaved);
    QCOMPARE(Files::snapshot(SwitchFile), before);
    QCOMPARE(plugin.value(Cellular), QJsonValue(false));
    QCOMPARE(daemon.recorded(), QStringList());
}

void TestSwitchSaving::keyThatTheFileCannotHold_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const char *content, const char *key, const char *shown) {
        QTest::newRow(name) << QByteArray(content) << QString::fromUtf8(key)
                            << QString::fromUtf8(shown);
    };
    row("equals sign", "", "a=b", R"("a=b")");
    row("empty", "", "", R"("")");
    row("comment", "", "#a", R"("#a")");
    row("blank at the end", "", "a ", R"("a ")");
    row("a line of its own", "", "a\nb=true\nc", R"("a\nb=true\nc")");
    row("taken by the library, in a new file", "", "Encoding", R"("Encoding")");
    row("taken by the library, in the first group", "[policy]\nb=true\n", "Encoding",
        R"("Encoding")");
    row("into a malformed file", "no key file\n", "a=b", R"("a=b")");
}

/// The plugin is not asked: it would keep, and announce, what is then refused.
void TestSwitchSaving::keyThatTheFileCannotHold()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, key);
    QFETCH(QString, shown);
    SwitchPlugin plugin;
    plugin.setSwitch(key, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    if (!content.isEmpty())
        Files::write(SwitchFile, content);
    const FileSnapshot before = Files::snapshot(SwitchFile);
    const int mark = plugin.mark();

    QCOMPARE(Caller().setSwitch(key, false).value(), QVariant(false));
    QCOMPARE(plugin.calls(mark), QStringList());
    QCOMPARE(daemon.said(), texts({"reply false"}));
    QCOMPARE(daemon.logged(),
             QStringList({QLatin1String("warning|default|Error saving key file 1 Key file cannot "
                                        "hold the key ")
                              + shown,
                          NotSaved}));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(Files::snapshot(SwitchFile), before);
    QVERIFY(QFile::exists(CameraMarker));
}

void TestSwitchSaving::keyForTheLibraryIsTakenBehindAnotherGroup()
{
    const QString key = QStringLiteral("Encoding");
    SwitchPlugin plugin;
    plugin.setSwitch(key, {}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(SwitchFile, "[other]\nx=1\n");

    QCOMPARE(Caller().setSwitch(key, false).value(), QVariant(true));
    QCOMPARE(Files::read(SwitchFile), QByteArray("[other]\nx=1\n\n[policy]\nEncoding=false\n"));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestSwitchSaving::savingWorksAgain()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    {
        const Mount disk = Mount::readOnly(QStringLiteral("/etc/policy"));
        QCOMPARE(Caller().setSwitch(Cellular, false).value(), QVariant(false));
    }
    daemon.forget();

    QCOMPARE(Caller().setSwitch(Cellular, false).value(), QVariant(true));
    QCOMPARE(Files::values(SwitchFile).value(Cellular), QStringLiteral("false"));
    // The plugin had taken the value the first time already.
    QCOMPARE(daemon.recorded(),
             texts({"Policy cellular changed. Old value false. New value false."}));
    QCOMPARE(daemon.logged(), QStringList());
}

QTEST_GUILESS_MAIN(TestSwitchSaving)
#include "tst_switchsaving.moc"
