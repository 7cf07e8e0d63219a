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

QString directoryOf(const Marker &marker)
{
    return QFileInfo(QString::fromLatin1(marker.path)).path();
}

QStringList warningOf(const Marker &marker, bool isCreation)
{
    const char *text = isCreation ? marker.creationWarning : marker.removalWarning;
    return {QLatin1String("warning|default|") + QLatin1String(text)};
}

} // namespace

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
    QTest::addColumn<int>("marker");
    QTest::addColumn<bool>("isCreation");
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("error");
    const auto row = [](int marker, bool isCreation, const char *call, const QString &path,
                        const char *error) {
        QTest::addRow("%s, %s: %s", Markers.at(size_t(marker)).policy, call, error)
            << marker << isCreation << QString::fromLatin1(call) << path
            << QString::fromLatin1(error);
    };
    for (int i = 0; i < int(Markers.size()); ++i) {
        const Marker &marker = Markers.at(size_t(i));
        const QString path = QString::fromLatin1(marker.path);
        for (const char *error : {"EIO", "EROFS", "EACCES", "EPERM"})
            row(i, false, "unlink", path, error);
        for (const char *error : {"EIO", "EROFS", "EACCES", "EMFILE", "ENFILE", "ENOSPC"})
            row(i, true, "openat", path, error);
        for (const char *error : {"EIO", "EROFS", "EACCES", "ENOSPC"})
            row(i, true, "mkdir", directoryOf(marker), error);
    }
}

void TestFailingMarkers::failureIsReportedAndNothingElse()
{
    QFETCH(int, marker);
    QFETCH(bool, isCreation);
    QFETCH(QString, call);
    QFETCH(QString, path);
    QFETCH(QString, error);
    const Marker &tested = Markers.at(size_t(marker));
    const QString policy = QString::fromLatin1(tested.policy);
    const bool value = isCreation == tested.isThereWhenAllowed;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(policy, value), QVariant(true));
    QCOMPARE(daemon.set(policy, !value), QVariant(true));
    QCOMPARE(QFile::exists(QString::fromLatin1(tested.path)), !isCreation);
    if (isCreation)
        QVERIFY(QDir(directoryOf(tested)).removeRecursively());
    daemon.forget();

    SystemCalls calls(daemon.process().processId(),
                      SystemCalls::failing(call, QStringLiteral("1"), error, path));
    const QVariant answer = daemon.set(policy, value);
    QCOMPARE(calls.end().filter(QStringLiteral("(INJECTED)")).size(), 1);

    QCOMPARE(answer, QVariant(true));
    QCOMPARE(daemon.logged(), warningOf(tested, isCreation));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(policy, value ? No : Yes, value ? Yes : No),
                          daemon.announcement(policy, value), QStringLiteral("reply true")}));
    QCOMPARE(Files::values(PolicyFile).value(policy), value ? Yes : No);
    QCOMPARE(daemon.policy(policy), QVariant(value));
    QCOMPARE(QFile::exists(QString::fromLatin1(tested.path)), !isCreation);
    // The next change finds its way again.
    QCOMPARE(daemon.set(policy, !value), QVariant(true));
    QCOMPARE(daemon.set(policy, value), QVariant(true));
    QCOMPARE(QFile::exists(QString::fromLatin1(tested.path)), isCreation);
}

void TestFailingMarkers::startGoesOnAfterAFailure()
{
    QFETCH(int, marker);
    QFETCH(bool, isCreation);
    QFETCH(QString, call);
    QFETCH(QString, path);
    QFETCH(QString, error);
    const Marker &tested = Markers.at(size_t(marker));
    const QString policy = QString::fromLatin1(tested.policy);
    const bool value = isCreation == tested.isThereWhenAllowed;
    Files::write(PolicyFile,
                 "[policy]\n" + QByteArray(tested.policy) + (value ? "=true\n" : "=false\n"));
    if (!isCreation)
        Files::write(QString::fromLatin1(tested.path), {});
    WatchedDaemon daemon;
    daemon.process().setWrapper(
        SystemCalls::wrapper(SystemCalls::failing(call, QStringLiteral("1+"), error, path)));
    QVERIFY(daemon.startObserved());

    // Each policy is carried out twice at start.
    QStringList told = daemon.complaints().filter(warningOf(tested, isCreation).first());
    QCOMPARE(told.size(), 2);
    QCOMPARE(QFile::exists(QString::fromLatin1(tested.path)), !isCreation);
    QCOMPARE(daemon.policy(policy), QVariant(value));
    QCOMPARE(daemon.policy(QStringLiteral("VpnEnabled")), QVariant(true));
    QCOMPARE(daemon.set(QStringLiteral("VpnEnabled"), false), QVariant(true));
    QCOMPARE(Files::values(PolicyFile).value(policy), value ? Yes : No);
}

QTEST_GUILESS_MAIN(TestFailingMarkers)
#include "tst_failingmarkers.moc"
