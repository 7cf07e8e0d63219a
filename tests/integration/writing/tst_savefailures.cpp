// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/mount.h"
#include "support/watcheddaemon.h"

#include <QtTest>

#include <sys/stat.h>

using namespace Support;

namespace {

const QString Directory = QStringLiteral("/etc/policy");

// GLib's numbers: of what is wrong with a file, and of what is wrong in a key file.
constexpr int ReadOnlySystem = 8;
constexpr int NoEntry = 4;
constexpr int NoSpace = 12;
constexpr int UnknownEncoding = 0;
constexpr int ParseError = 1;
constexpr int GroupNotFound = 4;

/// Checks the two lines of a failed write: @p action is "loading" or "saving", @p code and @p text
/// are GLib's number and a part of its message.
void verifyFailure(const QStringList &lines, const char *action, int code, const QString &text)
{
    QCOMPARE(lines.size(), 2);
    const QString start = QStringLiteral("warning|default|Error %1 key file %2 ")
                              .arg(QLatin1String(action))
                              .arg(code);
    QVERIFY2(lines.first().startsWith(start), qPrintable(lines.first()));
    const QString message = lines.first().mid(start.size());
    QVERIFY2(message.contains(text) && !message.startsWith(QLatin1Char('"')), qPrintable(message));
    QCOMPARE(lines.last(),
             QStringLiteral("warning|default|Failed to save configuration to file"
                            " \"/etc/policy/switch.conf\""));
}

/// Writes a policy that cannot be saved, and looks everywhere for traces of it.
void verifyRefused(WatchedDaemon &daemon, const char *action, int code, const char *text)
{
    const FileSnapshot before = Files::snapshot(PolicyFile);
    QCOMPARE(daemon.set(Camera, false), QVariant(false));
    QCOMPARE(daemon.said(), QStringList(QStringLiteral("reply false")));
    QCOMPARE(daemon.recorded(), QStringList());
    verifyFailure(daemon.logged(), action, code, QLatin1String(text));
    QVERIFY(Files::snapshot(PolicyFile) == before);
    QVERIFY(QFile::exists(CameraMarker)); // not enforced
    QCOMPARE(daemon.policy(Camera), QVariant(true));
}

/// After the obstacle is gone, the same write has all its effects.
void verifyAccepted(WatchedDaemon &daemon)
{
    daemon.forget();
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(Camera, QStringLiteral("true"), QStringLiteral("false")),
                          daemon.announcement(Camera, false), QStringLiteral("reply true")}));
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("false"));
    QVERIFY(!QFile::exists(CameraMarker));
}

/// Writes to @p path until no more fits on its disk.
void fillDisk(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (file.write("x", 1) == 1)
        continue;
}

} // namespace

/// A change that cannot be saved is not made.
class TestSaveFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void readOnlyDirectory();
    void missingDirectory();
    void fullDisk();
    void malformedFile_data();
    void malformedFile();
    void directoryInPlaceOfTheFile();
    void pipeInPlaceOfTheFile();
    void failureIsLoggedForEachWrite();
};

void TestSaveFailures::readOnlyDirectory()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    {
        const Mount mount = Mount::readOnly(Directory);
        verifyRefused(daemon, "saving", ReadOnlySystem, "Read-only file system");
    }
    verifyAccepted(daemon);
}

void TestSaveFailures::missingDirectory()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QDir(Directory).removeRecursively());
    verifyRefused(daemon, "saving", NoEntry, "No such file or directory");
    QVERIFY(!QFile::exists(Directory)); // it is not the daemon's to create
    QVERIFY(QDir().mkpath(Directory));
    verifyAccepted(daemon);
}

void TestSaveFailures::fullDisk()
{
    const Mount mount = Mount::small(Directory, 65536);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QString filler = Directory + QLatin1String("/filler");
    fillDisk(filler);
    verifyRefused(daemon, "saving", NoSpace, "No space left on device");
    QCOMPARE(QDir(Directory).entryList(QDir::Files | QDir::Hidden),
             QStringList({QStringLiteral("filler"), QStringLiteral("policy.conf")}));
    QVERIFY(QFile::remove(filler));
    verifyAccepted(daemon);
}

void TestSaveFailures::malformedFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const char *content, int code, const char *text) {
        QTest::newRow(name) << QByteArray(content) << code << QByteArray(text);
    };
    const char *line = "which is not a key-value pair, group, or comment";
    row("a letter", "Dear daemon,\n", ParseError, line);
    row("end of the file cut off", "[policy]\nCameraEnabled=true\nBrowser", ParseError, line);
    row("group not closed", "[policy\nCameraEnabled=true\n", ParseError, line);
    row("key in front of the group", "CameraEnabled=true\n[policy]\n", GroupNotFound,
        "does not start with a group");
    row("group without a name", "[]\nCameraEnabled=true\n", ParseError, "Invalid group name: ");
    row("key without a name", "[policy]\n=true\n", ParseError, line);
    row("bracket in the key", "[policy]\na[=true\n", ParseError, "Invalid key name: a[");
    row("another encoding", "[policy]\nEncoding=latin1\n", UnknownEncoding,
        "unsupported encoding ");
}

void TestSaveFailures::malformedFile()
{
    QFETCH(QByteArray, content);
    QFETCH(int, code);
    QFETCH(QByteArray, text);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(PolicyFile, content);
    verifyRefused(daemon, "loading", code, text.constData());
    QVERIFY(QFile::remove(PolicyFile));
    verifyAccepted(daemon);
}

void TestSaveFailures::directoryInPlaceOfTheFile()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(PolicyFile));
    QVERIFY(QDir().mkpath(PolicyFile));
    verifyRefused(daemon, "loading", ParseError, "Not a regular file");
    QVERIFY(QFileInfo(PolicyFile).isDir());
    QVERIFY(QDir().rmdir(PolicyFile));
    verifyAccepted(daemon);
}

void TestSaveFailures::pipeInPlaceOfTheFile()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(PolicyFile));
    QCOMPARE(mkfifo(qPrintable(PolicyFile), 0644), 0);

    QCOMPARE(daemon.set(Camera, false), QVariant(false)); // and at once, without a reader

    QCOMPARE(daemon.said(), QStringList(QStringLiteral("reply false")));
    QCOMPARE(daemon.recorded(), QStringList());
    verifyFailure(daemon.logged(), "loading", ParseError, QStringLiteral("Not a regular file"));
    QCOMPARE(daemon.policy(Camera), QVariant(true));
    struct stat status = {};
    QCOMPARE(lstat(qPrintable(PolicyFile), &status), 0);
    QVERIFY(S_ISFIFO(status.st_mode));
    QVERIFY(QFile::remove(PolicyFile));
    verifyAccepted(daemon);
}

void TestSaveFailures::failureIsLoggedForEachWrite()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(PolicyFile, "Dear daemon,\n");
    for (const char *key : {"CameraEnabled", "CameraEnabled", "com.example.Wish"})
        QCOMPARE(daemon.set(QLatin1String(key), true), QVariant(false));
    const QStringList lines = daemon.logged();
    QCOMPARE(lines.size(), 6);
    for (int i = 0; i < lines.size(); i += 2)
        QCOMPARE(lines.mid(i, 2), lines.mid(0, 2));
    QCOMPARE(daemon.said(),
             QStringList({QStringLiteral("reply false"), QStringLiteral("reply false"),
                          QStringLiteral("reply false")}));
}

QTEST_GUILESS_MAIN(TestSaveFailures)
#include "tst_savefailures.moc"
