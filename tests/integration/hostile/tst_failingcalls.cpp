// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/systemcalls.h"
#include "support/client.h"
#include "support/files.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
const QString CameraMarker = QStringLiteral("/var/lib/govd/camera_enabled");
const QString Camera = QStringLiteral("CameraEnabled");

/// Options that make the calls @p number (as in "2", "2+") of @p call fail with @p error, of those
/// that concern @p path, or of all when it is empty.
QStringList failing(const QString &call, const QString &number, const QString &error,
                    const QString &path)
{
    QStringList options{QStringLiteral("-e"), QLatin1String("trace=") + call, QStringLiteral("-e"),
                        QStringLiteral("inject=%1:error=%2:when=%3").arg(call, error, number)};
    if (!path.isEmpty())
        options += {QStringLiteral("-P"), path};
    return options;
}

void addCall(const char *name, const char *call, const char *number, const char *error,
             const QString &path)
{
    QTest::newRow(name) << failing(QLatin1String(call), QLatin1String(number), QLatin1String(error),
                                   path);
}

} // namespace

/// System calls that fail while a policy is written, and at start.
class TestFailingCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void writeThatCannotBeSavedIsNotMade_data();
    void writeThatCannotBeSavedIsNotMade();
    void failureThatDoesNotMatterIsNotTold_data();
    void failureThatDoesNotMatterIsNotTold();
    void markerThatFailsIsReportedAndNothingElse_data();
    void markerThatFailsIsReportedAndNothingElse();
    void unreadableFileIsNeverTakenForAMissingOne_data();
    void unreadableFileIsNeverTakenForAMissingOne();
};

void TestFailingCalls::writeThatCannotBeSavedIsNotMade_data()
{
    QTest::addColumn<QStringList>("options");
    for (const char *error : {"EIO", "EACCES", "EMFILE", "ENOMEM", "ENOENT"}) {
        // The file is there, so "no such file" can come from stat() only, and is the truth then.
        if (qstrcmp(error, "ENOENT") != 0)
            addCall(error, "openat", "1", error, PolicyFile);
    }
    addCall("file cannot be read", "read", "1", "EIO", PolicyFile);
    addCall("new file: no space", "openat", "4", "ENOSPC", {});
    addCall("new file: no descriptor", "openat", "4", "EMFILE", {});
    addCall("new file: read-only", "openat", "4", "EROFS", {});
    addCall("new file: forbidden", "openat", "4", "EACCES", {});
    addCall("content does not reach the disk", "fsync", "1", "EIO", {});
    addCall("content finds no space", "fsync", "1", "ENOSPC", {});
    for (const char *error : {"ENOSPC", "EROFS", "EIO", "EACCES"})
        QTest::addRow("rename: %s", error)
            << failing(QStringLiteral("rename"), QStringLiteral("1"), QLatin1String(error), {});
}

void TestFailingCalls::writeThatCannotBeSavedIsNotMade()
{
    QFETCH(QStringList, options);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    // The second write and all later ones make the same calls.
    QCOMPARE(daemon.set(QStringLiteral("VpnEnabled"), false), QVariant(true));
    daemon.forget();
    const FileSnapshot before = Files::snapshot(PolicyFile);

    SystemCalls calls(daemon.process().processId(), options);
    const QVariant answer = daemon.set(Camera, false);
    const QStringList injected = calls.end().filter(QStringLiteral("(INJECTED)"));

    QCOMPARE(injected.size(), 1);
    QVERIFY2(injected.first().contains(QStringLiteral("/etc/policy/policy.conf")),
             qPrintable(injected.first()));
    QCOMPARE(answer, QVariant(false));
    QCOMPARE(daemon.said(), QStringList(QStringLiteral("reply false")));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.logged().size(), 2);
    QVERIFY(Files::snapshot(PolicyFile) == before);
    QVERIFY(QFile::exists(CameraMarker));
    QCOMPARE(daemon.policy(Camera), QVariant(true));
    QCOMPARE(QDir(QStringLiteral("/etc/policy")).entryList(QDir::Files | QDir::Hidden),
             QStringList(QStringLiteral("policy.conf"))); // nothing half-written is left
}

void TestFailingCalls::failureThatDoesNotMatterIsNotTold_data()
{
    QTest::addColumn<QStringList>("options");
    addCall("no space reserved", "fallocate", "1", "ENOSPC", {});
    addCall("directory not opened", "openat", "1", "EMFILE", QStringLiteral("/etc/policy"));
    addCall("directory does not reach the disk", "fsync", "2", "EIO", {});
}

void TestFailingCalls::failureThatDoesNotMatterIsNotTold()
{
    QFETCH(QStringList, options);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    SystemCalls calls(daemon.process().processId(), options);
    const QVariant answer = daemon.set(Camera, false);
    QCOMPARE(calls.end().filter(QStringLiteral("(INJECTED)")).size(), 1);
    QCOMPARE(answer, QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(Camera, QStringLiteral("true"), QStringLiteral("false")),
                          daemon.announcement(Camera, false), QStringLiteral("reply true")}));
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("false"));
}

void TestFailingCalls::markerThatFailsIsReportedAndNothingElse_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<bool>("value");
    QTest::addColumn<QString>("warning");
    const auto row = [](const char *call, const char *error, const QString &path, bool value) {
        const QString warning = value ? QStringLiteral("Failed to create file:")
                                      : QStringLiteral("Failed to remove file:");
        QTest::addRow("%s: %s", call, error)
            << failing(QLatin1String(call), QStringLiteral("1"), QLatin1String(error), path)
            << value << QStringLiteral("warning|default|%1 \"%2\"").arg(warning, CameraMarker);
    };
    for (const char *error : {"EIO", "EROFS", "EACCES"})
        row("unlink", error, CameraMarker, false);
    for (const char *error : {"EIO", "EROFS", "EACCES", "EMFILE", "ENOSPC"})
        row("openat", error, CameraMarker, true);
    for (const char *error : {"EROFS", "EACCES", "ENOSPC"})
        row("mkdir", error, QStringLiteral("/var/lib/govd"), true);
}

void TestFailingCalls::markerThatFailsIsReportedAndNothingElse()
{
    QFETCH(QStringList, options);
    QFETCH(bool, value);
    QFETCH(QString, warning);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    if (value) {
        QCOMPARE(daemon.set(Camera, false), QVariant(true));
        QVERIFY(QDir(QStringLiteral("/var/lib/govd")).removeRecursively());
        daemon.forget();
    }
    SystemCalls calls(daemon.process().processId(), options);
    const QVariant answer = daemon.set(Camera, value);
    QCOMPARE(calls.end().filter(QStringLiteral("(INJECTED)")).size(), 1);
    QCOMPARE(answer, QVariant(true));
    QCOMPARE(daemon.logged(), QStringList(warning));
    const QString text = value ? QStringLiteral("true") : QStringLiteral("false");
    const QString old = value ? QStringLiteral("false") : QStringLiteral("true");
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(Camera, old, text), daemon.announcement(Camera, value),
                          QStringLiteral("reply true")}));
    QCOMPARE(Files::values(PolicyFile).value(Camera), text);
    QCOMPARE(daemon.policy(Camera), QVariant(value));
}

void TestFailingCalls::unreadableFileIsNeverTakenForAMissingOne_data()
{
    QTest::addColumn<QStringList>("options");
    for (const char *call : {"newfstatat", "statx", "access", "openat", "read"}) {
        for (const char *error : {"EIO", "EACCES", "ENOMEM"}) {
            QTest::addRow("%s: %s", call, error) << failing(
                QLatin1String(call), QStringLiteral("1+"), QLatin1String(error), PolicyFile);
        }
    }
}

void TestFailingCalls::unreadableFileIsNeverTakenForAMissingOne()
{
    QFETCH(QStringList, options);
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\nVpnEnabled=false\n");
    Files::write(QStringLiteral("/etc/policy/policy.d/seed.conf"),
                 "[policy]\nCameraEnabled=true\n");
    Daemon daemon;
    daemon.setWrapper(QStringList{QStringLiteral("strace"), QStringLiteral("-f"),
                                  QStringLiteral("-o"), QStringLiteral("/dev/null")}
                      + options);
    QVERIFY(daemon.start());
    Client client;
    if (!client.haveNoValue({Camera}))
        QCOMPARE(client.policy(Camera), QVariant(false));
    client.setPolicy(QStringLiteral("VpnEnabled"), false);
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("false"));
    QCOMPARE(Files::values(PolicyFile).value(QStringLiteral("VpnEnabled")),
             QStringLiteral("false"));
}

QTEST_GUILESS_MAIN(TestFailingCalls)
#include "tst_failingcalls.moc"
