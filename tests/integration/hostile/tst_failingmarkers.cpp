// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/systemcalls.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

/// A policy that is carried out by a file, and what the daemon says when it cannot.
struct Marker
{
    const char *policy;
    const char *path;
    bool isThereWhenAllowed;
    const char *creationWarning;
    const char *removalWarning;

    QString file() const { return QString::fromLatin1(path); }
    QString directory() const { return QFileInfo(file()).path(); }
};

const std::vector<Marker> Markers = {
    {"CameraEnabled", "/var/lib/govd/camera_enabled", true,
     "Failed to create file: \"/var/lib/govd/camera_enabled\"",
     "Failed to remove file: \"/var/lib/govd/camera_enabled\""},
    {"UserReportExportEnabled", "/var/lib/govd/user_report_enabled", true,
     "Failed to create file: \"/var/lib/govd/user_report_enabled\"",
     "Failed to remove file: \"/var/lib/govd/user_report_enabled\""},
    {"DeveloperShellEnabled", "/var/lib/devel-su/.disable", false, "Failed to disable devel-su",
     "Failed to enable devel-su"},
};

/// A change that makes or removes a marker, and the call that fails in it.
struct Attempt
{
    const Marker *marker = nullptr;
    bool isCreation = false;
    QString call;
    QString path; ///< in the call
    QString error;

    QString policy() const { return QString::fromLatin1(marker->policy); }
    bool value() const { return isCreation == marker->isThereWhenAllowed; }
    bool isMarkerThere() const { return QFile::exists(marker->file()); }
    QString warning() const
    {
        const char *text = isCreation ? marker->creationWarning : marker->removalWarning;
        return QLatin1String("warning|default|") + QLatin1String(text);
    }
};

} // namespace

Q_DECLARE_METATYPE(Attempt)

/// System calls that fail while a marker file is made or removed, in a change and at start: the
/// daemon says so in a line of its log, and everything else goes its way.
class TestFailingMarkers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void failureIsReportedAndNothingElse_data() { addRows(); }
    void failureIsReportedAndNothingElse();
    void startGoesOnAfterAFailure_data() { addRows(); }
    void startGoesOnAfterAFailure();

private:
    void addRows();
};

void TestFailingMarkers::addRows()
{
    QTest::addColumn<Attempt>("attempt");
    const auto row = [](const Attempt &attempt) {
        QTest::addRow("%s, %s: %s", attempt.marker->policy, qPrintable(attempt.call),
                      qPrintable(attempt.error))
            << attempt;
    };
    for (const Marker &marker : Markers) {
        for (const auto error : {"EIO", "EROFS", "EACCES", "EPERM"})
            row({&marker, false, QStringLiteral("unlink"), marker.file(), QLatin1String(error)});
        for (const auto error : {"EIO", "EROFS", "EACCES", "EMFILE", "ENFILE", "ENOSPC"})
            row({&marker, true, QStringLiteral("openat"), marker.file(), QLatin1String(error)});
        for (const auto error : {"EIO", "EROFS", "EACCES", "ENOSPC"})
            row({&marker, true, QStringLiteral("mkdir"), marker.directory(), QLatin1String(error)});
    }
}

void TestFailingMarkers::failureIsReportedAndNothingElse()
{
    QFETCH(Attempt, attempt);
    const QString policy = attempt.policy();
    const bool value = attempt.value();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(policy, value), QVariant(true));
    QCOMPARE(daemon.set(policy, !value), QVariant(true));
    QCOMPARE(attempt.isMarkerThere(), !attempt.isCreation);
    if (attempt.isCreation)
        QVERIFY(QDir(attempt.marker->directory()).removeRecursively());
    daemon.forget();

    SystemCalls calls(
        daemon.process().processId(),
        SystemCalls::failing(attempt.call, QStringLiteral("1"), attempt.error, attempt.path));
    const QVariant answer = daemon.set(policy, value);
    QCOMPARE(calls.end().filter(QStringLiteral("(INJECTED)")).size(), 1);

    QCOMPARE(answer, QVariant(true));
    QCOMPARE(daemon.logged(), QStringList(attempt.warning()));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(policy, value ? No : Yes, value ? Yes : No),
                          daemon.announcement(policy, value), QStringLiteral("reply true")}));
    QCOMPARE(Files::values(PolicyFile).value(policy), value ? Yes : No);
    QCOMPARE(daemon.policy(policy), QVariant(value));
    QCOMPARE(attempt.isMarkerThere(), !attempt.isCreation);
    // The next change finds its way again.
    QCOMPARE(daemon.set(policy, !value), QVariant(true));
    QCOMPARE(daemon.set(policy, value), QVariant(true));
    QCOMPARE(attempt.isMarkerThere(), attempt.isCreation);
}

void TestFailingMarkers::startGoesOnAfterAFailure()
{
    QFETCH(Attempt, attempt);
    const QString policy = attempt.policy();
    const bool value = attempt.value();
    Files::write(PolicyFile,
                 "[policy]\n" + QByteArray(attempt.marker->policy)
                     + (value ? "=true\n" : "=false\n"));
    if (!attempt.isCreation)
        Files::write(attempt.marker->file(), {});
    WatchedDaemon daemon;
    daemon.process().setWrapper(SystemCalls::wrapper(
        SystemCalls::failing(attempt.call, QStringLiteral("1+"), attempt.error, attempt.path)));
    QVERIFY(daemon.startObserved());

    // Each policy is carried out twice at start.
    QStringList told = daemon.complaints().filter(attempt.warning());
    QCOMPARE(told.size(), 2);
    QCOMPARE(attempt.isMarkerThere(), !attempt.isCreation);
    QCOMPARE(daemon.policy(policy), QVariant(value));
    QCOMPARE(daemon.policy(QStringLiteral("VpnEnabled")), QVariant(true));
    QCOMPARE(daemon.set(QStringLiteral("VpnEnabled"), false), QVariant(true));
    QCOMPARE(Files::values(PolicyFile).value(policy), value ? Yes : No);
}

QTEST_GUILESS_MAIN(TestFailingMarkers)
#include "tst_failingmarkers.moc"
