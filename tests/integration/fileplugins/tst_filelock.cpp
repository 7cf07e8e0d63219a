// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmonitor.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/lockplugin.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Path = QStringLiteral("/etc/govd/filelock.conf");
const QString Camera = QStringLiteral("CameraEnabled");
const QString Browser = QStringLiteral("BrowserEnabled");

bool isAnnounced(const BusMonitor &monitor, const QString &key, bool value)
{
    const auto signal = monitor.announcements(QStringLiteral("PolicyChanged"));
    return std::any_of(signal.begin(), signal.end(), [&](const BusMessage &message) {
        return message.arguments == QVariantList({key, value});
    });
}

} // namespace

/// Locks that follow a file.
class TestFileLock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void withoutAFileNothingIsLocked();
    void locksWhatTheFileLists();
    void followsAnEdit_data();
    void followsAnEdit();
    void malformedFileKeepsTheLocksAndIsToldOnce();
    void unknownPolicyIsNoLock();
};

void TestFileLock::init()
{
    Files::reset();
    QVERIFY(QDir().mkpath(QStringLiteral("/etc/govd")));
    Files::write(LockPlugin::directory() + QStringLiteral("filelock.so"),
                 Files::read(QStringLiteral(GOVD_FILELOCK)));
}

void TestFileLock::cleanup()
{
    QVERIFY(QDir(QStringLiteral("/etc/govd")).removeRecursively());
    QVERIFY(QFile::remove(LockPlugin::directory() + QStringLiteral("filelock.so")));
}

void TestFileLock::withoutAFileNothingIsLocked()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QVERIFY(daemon.log().filter(QStringLiteral("filelock")).isEmpty());
}

void TestFileLock::locksWhatTheFileLists()
{
    Files::write(Path, "[lock]\npolicies=CameraEnabled;BrowserEnabled\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(false));
    QCOMPARE(client.policy(Browser), QVariant(false));
    QCOMPARE(client.policy(QStringLiteral("VpnEnabled")), QVariant(true));
    QVERIFY(!client.setPolicy(Camera, true));
}

void TestFileLock::followsAnEdit_data()
{
    QTest::addColumn<bool>("inPlace");
    QTest::newRow("written in place") << true;
    QTest::newRow("replaced") << false;
}

void TestFileLock::followsAnEdit()
{
    QFETCH(const bool, inPlace);
    const auto edit = [&](const QByteArray &content) {
        inPlace ? Files::write(Path, content) : Files::replace(Path, content);
    };
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;

    edit("[lock]\npolicies=CameraEnabled\n");
    QTRY_VERIFY(isAnnounced(monitor, Camera, false));
    QCOMPARE(Client().policy(Camera), QVariant(false));

    edit("[lock]\npolicies=BrowserEnabled\n");
    QTRY_VERIFY(isAnnounced(monitor, Camera, true));
    QTRY_VERIFY(isAnnounced(monitor, Browser, false));
    QCOMPARE(Client().policy(Camera), QVariant(true));
}

void TestFileLock::malformedFileKeepsTheLocksAndIsToldOnce()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;
    Files::replace(Path, "[lock]\npolicies=CameraEnabled\n");
    QTRY_VERIFY(isAnnounced(monitor, Camera, false));
    const QString warning = QStringLiteral("warning|default|filelock: %1 is malformed: its last "
                                           "good content is in force")
                                .arg(Path);

    Files::replace(Path, "policies=\n");
    QVERIFY(daemon.waitForLog(warning));
    Files::replace(Path, "still no key file\n");
    Files::replace(Path, "[lock]\npolicies=NfcEnabled;NfcEnabledd\n");
    QCOMPARE(Client().policy(Camera), QVariant(false));

    Files::replace(Path, "[lock]\npolicies=\n");
    QTRY_VERIFY(isAnnounced(monitor, Camera, true));
    QCOMPARE(daemon.log().count(warning), 1);
}

void TestFileLock::unknownPolicyIsNoLock()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Files::replace(Path, "[lock]\npolicies=CameraEnabled;BrowserEnabledd\n");
    QVERIFY(daemon.waitForLog(QStringLiteral("warning|default|filelock: %1 is malformed, and no "
                                             "good content is known: nothing is in force")
                                  .arg(Path)));
    QCOMPARE(Client().policy(Camera), QVariant(true));
}

QTEST_GUILESS_MAIN(TestFileLock)
#include "tst_filelock.moc"
