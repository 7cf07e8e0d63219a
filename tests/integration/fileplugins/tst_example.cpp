// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/waiting.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Marker = QStringLiteral("/run/kiosk/active");
const QString Browser = QStringLiteral("BrowserEnabled");

} // namespace

/// The example for authors of lock plugins.
class TestExample : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void locksWhileTheMarkerIsThere();
    void markerThatComesDuringTheStart();
    void missingDirectoryIsTold();
};

void TestExample::init()
{
    Files::reset();
    QVERIFY(QDir().mkpath(QStringLiteral("/run/kiosk")));
    Files::write(LockPlugin::directory() + QStringLiteral("kiosk.so"),
                 Files::read(QStringLiteral(GOVD_KIOSK)));
}

void TestExample::cleanup()
{
    QVERIFY(QDir(QStringLiteral("/run/kiosk")).removeRecursively());
    QVERIFY(QFile::remove(LockPlugin::directory() + QStringLiteral("kiosk.so")));
}

void TestExample::locksWhileTheMarkerIsThere()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Browser), QVariant(true));
    Files::write(Marker, {});
    QTRY_COMPARE(Client().policy(Browser), QVariant(false));
    QVERIFY(!Client().setPolicy(Browser, true));
    QVERIFY(QFile::remove(Marker));
    QTRY_COMPARE(Client().policy(Browser), QVariant(true));
    QVERIFY(daemon.log().filter(QStringLiteral("kiosk")).isEmpty());
}

/// Stops the daemon when the plugin has looked for the marker, makes it, and lets the daemon go on.
void TestExample::markerThatComesDuringTheStart()
{
    const QTemporaryDir directory;
    const QString calls = directory.filePath(QStringLiteral("calls"));
    Daemon daemon;
    daemon.setWrapper({QStringLiteral("strace"), QStringLiteral("-o"), calls, QStringLiteral("-P"),
                       Marker, QStringLiteral("-e"),
                       QStringLiteral("inject=%file:signal=SIGSTOP:when=1")});
    daemon.launch();
    QVERIFY(waitFor([&] { return Files::read(calls).contains("stopped by SIGSTOP"); }));
    Files::write(Marker, {});
    daemon.resume();
    QVERIFY(daemon.waitUntilReady());
    QTRY_COMPARE(Client().policy(Browser), QVariant(false));
}

void TestExample::missingDirectoryIsTold()
{
    QVERIFY(QDir(QStringLiteral("/run/kiosk")).removeRecursively());
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.log().filter(QStringLiteral("kiosk")),
             QStringList(QStringLiteral("warning|default|kiosk: cannot watch \"/run/kiosk\" so "
                                        "nothing will be locked")));
}

QTEST_GUILESS_MAIN(TestExample)
#include "tst_example.moc"
