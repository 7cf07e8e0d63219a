// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"

#include <QDBusVariant>
#include <QtTest>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Support;

namespace {

/// What a symbolic link leads to: a file, and nothing.
const QString Victim = QStringLiteral("/var/tmp/victim");
const QString Nowhere = QStringLiteral("/var/tmp/nowhere");

void makeSocket(const QString &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, qPrintable(path), sizeof address.sun_path);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    QCOMPARE(bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    close(descriptor);
}

void makeObject(const QString &kind, const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    if (kind == QLatin1String("link"))
        QVERIFY(QFile::link(Victim, path));
    else if (kind == QLatin1String("dangling link"))
        QVERIFY(QFile::link(Nowhere, path));
    else if (kind == QLatin1String("link to itself"))
        QVERIFY(QFile::link(path, path));
    else if (kind == QLatin1String("pipe"))
        QCOMPARE(mkfifo(qPrintable(path), 0666), 0);
    else if (kind == QLatin1String("directory"))
        QVERIFY(QDir().mkpath(path + QLatin1String("/inside")));
    else if (kind == QLatin1String("endless device"))
        QCOMPARE(mknod(qPrintable(path), S_IFCHR | 0666, makedev(1, 5)), 0);
    else if (kind == QLatin1String("socket"))
        makeSocket(path);
    else
        QFAIL("unknown kind");
}

} // namespace

/// Every kind of object in the place of each file and directory that the daemon touches: it does
/// not hang, ends in order, and writes nowhere else.
///
/// What it does beside that: a link in the place of a configuration file is read through and, by
/// the first write, replaced by a file; a link to nothing in the place of a marker has the marker
/// made where it leads. All these directories belong to root.
class TestOddObjects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void isSurvived_data();
    void isSurvived();
};

void TestOddObjects::init()
{
    Files::reset();
    Files::write(Victim, "[policy]\nCameraEnabled=false\n");
    QFile::remove(Nowhere);
}

void TestOddObjects::isSurvived_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("kind");
    for (const char *path :
         {"/etc/policy/policy.conf", "/etc/policy/switch.conf", "/etc/policy/policy.d",
          "/etc/policy/switch.d", "/etc/policy/policy.d/seed", "/etc/policy/switch.d/seed",
          "/var/lib/govd", "/var/lib/govd/camera_enabled", "/var/lib/govd/user_report_enabled",
          "/var/lib/devel-su", "/var/lib/devel-su/.disable"}) {
        for (const char *kind : {"link", "dangling link", "link to itself", "pipe", "directory",
                                 "endless device", "socket"})
            QTest::addRow("%s: %s", path, kind)
                << QString::fromLatin1(path) << QString::fromLatin1(kind);
    }
}

void TestOddObjects::isSurvived()
{
    QFETCH(QString, path);
    QFETCH(QString, kind);
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("camera"), {1}, true);
    makeObject(kind, path);
    const FileSnapshot victim = Files::snapshot(Victim);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    for (const bool value : {false, true, false}) {
        client.setPolicy(QStringLiteral("CameraEnabled"), value);
        client.setPolicy(QStringLiteral("UserReportExportEnabled"), value);
        client.setPolicy(QStringLiteral("DeveloperShellEnabled"), value);
        client.call(QStringLiteral("Switch"), QStringLiteral("SetKeyValue"),
                    {QStringLiteral("camera"), QVariant::fromValue(QDBusVariant(value))});
    }
    QCOMPARE(daemon.stop(), 0);
    QVERIFY(Files::snapshot(Victim) == victim);
    const bool isMarker =
        path.contains(QLatin1String("enabled")) || path.endsWith(QLatin1String("disable"));
    QVERIFY(isMarker || !QFile::exists(Nowhere));
}

QTEST_GUILESS_MAIN(TestOddObjects)
#include "tst_oddobjects.moc"
