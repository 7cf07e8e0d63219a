// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/mount.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Directory = QStringLiteral("/var/lib/govd");
const QString UserReport = QStringLiteral("UserReportExportEnabled");

QString failure(const char *text, const QString &path)
{
    return QStringLiteral("warning|default|%1 \"%2\"").arg(QLatin1String(text), path);
}

/// Has the next start store @p value for both policies.
void storeAtStart(bool value)
{
    const QByteArray text = value ? "true" : "false";
    Files::write(PolicyFile,
                 "[policy]\nCameraEnabled=" + text + "\nUserReportExportEnabled=" + text + '\n');
}

} // namespace

/// The files that are there while a feature is allowed.
class TestMarkerFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void fileFollowsThePolicy_data() { addRows(); }
    void fileFollowsThePolicy();
    void startCreatesDirectoryAndFile_data() { addRows(); }
    void startCreatesDirectoryAndFile();
    void startRemovesTheFile_data() { addRows(); }
    void startRemovesTheFile();
    void forbiddenFeaturesLeaveNothingBehind();
    void presentFileIsLeftAlone_data() { addRows(); }
    void presentFileIsLeftAlone();
    void missingFileIsLeftMissing_data() { addRows(); }
    void missingFileIsLeftMissing();
    void otherPoliciesDoNotTouchTheFile_data() { addRows(); }
    void otherPoliciesDoNotTouchTheFile();
    void fileInPlaceOfTheDirectory_data() { addRows(); }
    void fileInPlaceOfTheDirectory();
    void readOnlyDirectoryFailsCreation_data() { addRows(); }
    void readOnlyDirectoryFailsCreation();
    void readOnlyDirectoryFailsRemoval_data() { addRows(); }
    void readOnlyDirectoryFailsRemoval();
    void directoryInPlaceOfTheFile_data() { addRows(); }
    void directoryInPlaceOfTheFile();

private:
    /// Both markers: the policy and its file.
    static void addRows()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("path");
        QTest::newRow("camera") << Camera << Directory + QLatin1String("/camera_enabled");
        QTest::newRow("user report")
            << UserReport << Directory + QLatin1String("/user_report_enabled");
    }
};

void TestMarkerFiles::fileFollowsThePolicy()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(daemon.set(key, true), QVariant(true));
        QVERIFY(Files::snapshot(path).exists);
        QCOMPARE(Files::snapshot(path).content, QByteArray());
        // No other file comes with it.
        QCOMPARE(QDir(Directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList(QFileInfo(path).fileName()));
        QCOMPARE(daemon.set(key, false), QVariant(true));
        QVERIFY(!QFile::exists(path));
    }
    QVERIFY(QFileInfo(Directory).isDir());
    QCOMPARE(daemon.logged(), QStringList());
}

void TestMarkerFiles::startCreatesDirectoryAndFile()
{
    QFETCH(QString, path);
    storeAtStart(true);
    QVERIFY(!QFile::exists(Directory));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Files::snapshot(path).exists);
    QCOMPARE(Files::snapshot(path).content, QByteArray());
}

void TestMarkerFiles::startRemovesTheFile()
{
    QFETCH(QString, path);
    storeAtStart(false);
    Files::write(path, {});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(path));
}

void TestMarkerFiles::forbiddenFeaturesLeaveNothingBehind()
{
    storeAtStart(false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(Directory));
    QCOMPARE(daemon.process().log().filter(QStringLiteral("file")), QStringList());
}

void TestMarkerFiles::presentFileIsLeftAlone()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(true);
    Files::write(path, "not the daemon's\n");
    const FileSnapshot before = Files::snapshot(path);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Files::snapshot(path) == before);

    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(Files::snapshot(path) == before); // it stays when the daemon ends
    QVERIFY(daemon.start());
    QVERIFY(Files::snapshot(path) == before);

    // Allowed by a change, too, when somebody else has made the file in between.
    QCOMPARE(daemon.set(key, false), QVariant(true));
    Files::write(path, "not the daemon's\n");
    const FileSnapshot made = Files::snapshot(path);
    QCOMPARE(daemon.set(key, true), QVariant(true));
    QVERIFY(Files::snapshot(path) == made);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestMarkerFiles::missingFileIsLeftMissing()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(path));
    QCOMPARE(daemon.set(key, false), QVariant(true));
    QVERIFY(!QFile::exists(path));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestMarkerFiles::otherPoliciesDoNotTouchTheFile()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(path)); // it would come back
    const QString other = key == Camera ? UserReport : Camera;
    for (const QString &changed : {other, QStringLiteral("LocationEnabled")}) {
        QCOMPARE(daemon.set(changed, false), QVariant(true));
        QCOMPARE(daemon.set(changed, true), QVariant(true));
    }
    QCOMPARE(daemon.set(key, true), QVariant(true)); // no change either
    QVERIFY(!QFile::exists(path));
}

void TestMarkerFiles::fileInPlaceOfTheDirectory()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(Directory, "no directory\n");

    QCOMPARE(daemon.set(key, true), QVariant(true));

    QCOMPARE(daemon.logged(), QStringList(failure("Failed to create file:", path)));
    QCOMPARE(daemon.policy(key), QVariant(true)); // the value counts all the same
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(key, QStringLiteral("false"), QStringLiteral("true")),
                          daemon.announcement(key, true), QStringLiteral("reply true"),
                          QStringLiteral("reply true")})); // of the write, of the read
    QCOMPARE(daemon.set(key, false), QVariant(true));
    QCOMPARE(Files::read(Directory), QByteArray("no directory\n"));
    QCOMPARE(daemon.logged().size(), 1);
}

void TestMarkerFiles::readOnlyDirectoryFailsCreation()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(false);
    QVERIFY(QDir().mkpath(Directory));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    {
        const Mount mount = Mount::readOnly(Directory);
        QCOMPARE(daemon.set(key, true), QVariant(true));
        QCOMPARE(daemon.logged(), QStringList(failure("Failed to create file:", path)));
        QCOMPARE(daemon.set(key, false), QVariant(true)); // nothing to remove
        QCOMPARE(daemon.logged().size(), 1);
    }
    QCOMPARE(daemon.set(key, true), QVariant(true)); // nothing is remembered of a failure
    QVERIFY(QFile::exists(path));
    QCOMPARE(daemon.logged().size(), 1);
}

void TestMarkerFiles::readOnlyDirectoryFailsRemoval()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const Mount mount = Mount::readOnly(Directory);

    QCOMPARE(daemon.set(key, false), QVariant(true));

    QCOMPARE(daemon.logged(), QStringList(failure("Failed to remove file:", path)));
    QCOMPARE(daemon.policy(key), QVariant(false));
    QVERIFY(QFile::exists(path));
    QCOMPARE(daemon.set(key, true), QVariant(true)); // it is there already
    QCOMPARE(daemon.logged().size(), 1);
}

void TestMarkerFiles::directoryInPlaceOfTheFile()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    storeAtStart(true);
    Files::write(path + QLatin1String("/inside"), "x");
    WatchedDaemon daemon;
    QVERIFY(daemon.process().start());
    QCOMPARE(daemon.logged().filter(path), QStringList()); // whatever is there is left alone
    daemon.forget();

    QCOMPARE(daemon.set(key, false), QVariant(true));

    QCOMPARE(daemon.logged(), QStringList(failure("Failed to remove file:", path)));
    QCOMPARE(Files::read(path + QLatin1String("/inside")), QByteArray("x"));
    // At a start the policy is enforced twice: when it is stored, and again with all others.
    QCOMPARE(daemon.process().stop(), 0);
    const int mark = daemon.process().mark();
    QVERIFY(daemon.process().start());
    QCOMPARE(daemon.process().log(mark).filter(path),
             QStringList({failure("Failed to remove file:", path),
                          failure("Failed to remove file:", path)}));
}

QTEST_GUILESS_MAIN(TestMarkerFiles)
#include "tst_markerfiles.moc"
