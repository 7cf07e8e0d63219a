// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "names.h"
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Path = QStringLiteral("/etc/govd/fileswitch.conf");
const QString Camera = QStringLiteral("CameraEnabled");
const QString Marker = QStringLiteral("/var/lib/govd/camera_enabled");

bool isAnnounced(const BusMonitor &monitor, const char *signal, const QString &key, bool value)
{
    const auto messages = monitor.announcements(QString::fromLatin1(signal));
    return std::any_of(messages.begin(), messages.end(), [&](const BusMessage &message) {
        return message.arguments == QVariantList({key, value});
    });
}

} // namespace

/// Access switches that are kept in a file.
class TestFileSwitch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void switchesAreThoseOfTheFile();
    void offForcesItsPoliciesOff();
    void writeIsRecordedAndKeepsComments();
    void unknownSwitchIsRefused();
    void followsAnEdit();
    void switchThatGoesFreesItsPolicies();
    void malformedFileKeepsTheSwitches_data();
    void malformedFileKeepsTheSwitches();
};

void TestFileSwitch::init()
{
    Files::reset();
    QVERIFY(QDir().mkpath(QStringLiteral("/etc/govd")));
    QVERIFY(QDir().mkpath(QFileInfo(Names::AccessSwitchPlugin).path()));
    Files::write(Names::AccessSwitchPlugin, Files::read(QStringLiteral(GOVD_FILESWITCH)));
    Files::write(Path, "# by the house\n[lens]\npolicies=CameraEnabled\nvalue=true\n");
}

void TestFileSwitch::cleanup()
{
    QVERIFY(QDir(QStringLiteral("/etc/govd")).removeRecursively());
    QVERIFY(QFile::remove(Names::AccessSwitchPlugin));
}

void TestFileSwitch::switchesAreThoseOfTheFile()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.switches(), QStringList({QStringLiteral("lens")}));
    QCOMPARE(client.switchValue(QStringLiteral("lens")), QVariant(true));
    QCOMPARE(client.policy(Camera), QVariant(true));
}

void TestFileSwitch::offForcesItsPoliciesOff()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::exists(Marker));
    BusMonitor monitor;
    QCOMPARE(Caller().setSwitch(QStringLiteral("lens"), false).value(), QVariant(true));
    QVERIFY(!QFile::exists(Marker));
    QCOMPARE(Client().policy(Camera), QVariant(false));
    QTRY_VERIFY(isAnnounced(monitor, "SwitchChanged", QStringLiteral("lens"), false));
}

void TestFileSwitch::writeIsRecordedAndKeepsComments()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setSwitch(QStringLiteral("lens"), false).value(), QVariant(true));
    QCOMPARE(Files::read(Path),
             QByteArray("# by the house\n\n[lens]\npolicies=CameraEnabled\nvalue=false\n"));
}

void TestFileSwitch::unknownSwitchIsRefused()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().setSwitch(QStringLiteral("ear"), false).value(), QVariant(false));
    QVERIFY(daemon.waitForLog(QStringLiteral("warning|default|Return code: 2")));
}

void TestFileSwitch::followsAnEdit()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;
    Files::write(Path, "[lens]\npolicies=CameraEnabled\nvalue=false\n");
    QTRY_VERIFY(isAnnounced(monitor, "SwitchChanged", QStringLiteral("lens"), false));
    QVERIFY(!QFile::exists(Marker));
}

void TestFileSwitch::switchThatGoesFreesItsPolicies()
{
    Files::write(Path, "[lens]\npolicies=CameraEnabled\nvalue=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(Marker));
    QVERIFY(QFile::remove(Path));
    QTRY_VERIFY(QFile::exists(Marker));
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QCOMPARE(Client().switches(), QStringList());
}

void TestFileSwitch::malformedFileKeepsTheSwitches_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("unknown policy") << QByteArray("[lens]\npolicies=NoSuchPolicy\nvalue=true\n");
    QTest::newRow("no policies") << QByteArray("[lens]\nvalue=true\n");
    QTest::newRow("no value") << QByteArray("[lens]\npolicies=CameraEnabled\n");
    QTest::newRow("value that is no boolean")
        << QByteArray("[lens]\npolicies=CameraEnabled\nvalue=perhaps\n");
    QTest::newRow("no key file") << QByteArray("lens is on\n");
    QTest::newRow("empty, as while it is being written in place") << QByteArray();
}

void TestFileSwitch::malformedFileKeepsTheSwitches()
{
    QFETCH(QByteArray, content);
    Files::write(Path, "[lens]\npolicies=CameraEnabled\nvalue=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Files::replace(Path, content);
    const QString warning =
        QStringLiteral("warning|default|fileswitch: %1 is %2: its last good "
                       "content is in force")
            .arg(Path, content.isEmpty() ? QStringLiteral("empty") : QStringLiteral("malformed"));
    QVERIFY(daemon.waitForLog(warning));
    QCOMPARE(Client().switchValue(QStringLiteral("lens")), QVariant(false));
    QVERIFY(!QFile::exists(Marker));
    QCOMPARE(Caller().setSwitch(QStringLiteral("lens"), true).value(), QVariant(false));
    QCOMPARE(Files::read(Path), content);

    QCOMPARE(daemon.stop(), 0);
    const int mark = daemon.mark();
    QVERIFY(daemon.start());
    QCOMPARE(Client().switchValue(QStringLiteral("lens")), QVariant(false));
    QVERIFY(!QFile::exists(Marker));
    QCOMPARE(daemon.log(mark).filter(QStringLiteral("fileswitch")), QStringList(warning));

    Files::replace(Path, "[lens]\npolicies=CameraEnabled\nvalue=true\n");
    QTRY_COMPARE(Client().switchValue(QStringLiteral("lens")), QVariant(true));
    QCOMPARE(daemon.log().count(warning), 2);
}

QTEST_GUILESS_MAIN(TestFileSwitch)
#include "tst_fileswitch.moc"
