// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/mount.h"

#include <QtTest>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

using namespace Support;

namespace {

const QString Path = QStringLiteral("/etc/govd/filelock.conf");
const QString Kept = QStringLiteral("/var/lib/govd/plugins/filelock.conf");
const QByteArray CameraLocked("[lock]\npolicies=CameraEnabled\n");
const QString InForceAgain =
    QStringLiteral("info|default|filelock: %1 is good: it is in force").arg(Path);

QString keptLine(const QString &fault)
{
    return QStringLiteral("warning|default|filelock: %1 %2: its last good content is in force")
        .arg(Path, fault);
}

QString neverGoodLine(const QString &fault)
{
    return QStringLiteral(
               "warning|default|filelock: %1 %2, and no good content is known: nothing is in force")
        .arg(Path, fault);
}

/// Puts an object of another kind into the place of the file in one step.
void damage(const QString &kind)
{
    const QString draft = Path + QStringLiteral(".draft");
    const QByteArray path = draft.toLocal8Bit();
    if (kind == QLatin1String("malformed"))
        Files::write(draft, "[lock]\npolicies=NoSuchPolicy\n");
    else if (kind == QLatin1String("empty"))
        Files::write(draft, {});
    else if (kind == QLatin1String("of another owner")) {
        Files::write(draft, "[lock]\npolicies=\n");
        QCOMPARE(chown(path.constData(), 7006, 7006), 0);
        QCOMPARE(chmod(path.constData(), 0600), 0);
    } else if (kind == QLatin1String("pipe"))
        QCOMPARE(mkfifo(path.constData(), 0644), 0);
    else if (kind == QLatin1String("endless device"))
        QCOMPARE(mknod(path.constData(), S_IFCHR | 0666, makedev(1, 5)), 0);
    else if (kind == QLatin1String("link to nothing"))
        QVERIFY(QFile::link(QStringLiteral("/srv/not/there"), draft));
    else if (kind == QLatin1String("link to itself"))
        QVERIFY(QFile::link(Path, draft));
    else if (kind == QLatin1String("endless")) {
        Files::write(draft, CameraLocked);
        QVERIFY(QFile::resize(draft, Q_INT64_C(1) << 40));
    } else
        QFAIL("unknown kind");
    QCOMPARE(std::rename(path.constData(), qPrintable(Path)), 0);
}

QStringList pluginLines(const Daemon &daemon, int since)
{
    return daemon.log(since).filter(QStringLiteral("filelock"));
}

} // namespace

/// What a plugin with a file goes by when the file is damaged, shown with locks.
class TestKeptState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void damagedFileKeepsWhatItHeld_data();
    void damagedFileKeepsWhatItHeld();
    void damagedFromTheFirstCountsForNothing_data();
    void damagedFromTheFirstCountsForNothing();
    void mendedFileIsInForce();
    void removedFileIsForgotten();
    void killLosesNothing();
    void keptForRootAloneAndWrittenWhenItChanges();
    void stateThatCannotBeKeptIsTold();
    void damagedKeptStateCountsForNothing();
    void linkIsFollowed();

private:
    static void addDamages();
};

void TestKeptState::init()
{
    Files::reset();
    QVERIFY(QDir().mkpath(QStringLiteral("/etc/govd")));
    Files::write(LockPlugin::directory() + QStringLiteral("filelock.so"),
                 Files::read(QStringLiteral(GOVD_FILELOCK)));
}

void TestKeptState::cleanup()
{
    QVERIFY(QDir(QStringLiteral("/etc/govd")).removeRecursively());
    QVERIFY(QFile::remove(LockPlugin::directory() + QStringLiteral("filelock.so")));
}

void TestKeptState::addDamages()
{
    QTest::addColumn<QString>("fault");
    const auto row = [](const char *kind, const char *fault) {
        QTest::newRow(kind) << QString::fromLatin1(fault);
    };
    row("malformed", "is malformed");
    row("empty", "is empty");
    row("of another owner", "cannot be read (Permission denied)");
    row("pipe", "is no regular file");
    row("endless device", "is no regular file");
    row("link to nothing", "is a link to what the daemon does not see");
    row("link to itself", "cannot be read (Too many levels of symbolic links)");
    row("endless", "is larger than a mebibyte");
}

void TestKeptState::damagedFileKeepsWhatItHeld_data()
{
    addDamages();
}

void TestKeptState::damagedFileKeepsWhatItHeld()
{
    QFETCH(QString, fault);
    Files::write(Path, CameraLocked);
    Daemon daemon;
    daemon.setWrapper({QStringLiteral("setpriv"), QStringLiteral("--bounding-set=-all")});
    QVERIFY(daemon.start());
    QCOMPARE(pluginLines(daemon, 0), QStringList());

    damage(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(daemon.waitForLog(keptLine(fault)));
    QCOMPARE(Client().policy(Camera), QVariant(false));

    QCOMPARE(daemon.stop(), 0);
    const int mark = daemon.mark();
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(false));
    QVERIFY(!Client().setPolicy(Camera, true));
    QCOMPARE(Client().policy(QStringLiteral("VpnEnabled")), QVariant(true));
    QCOMPARE(pluginLines(daemon, mark), QStringList(keptLine(fault)));
}

void TestKeptState::damagedFromTheFirstCountsForNothing_data()
{
    addDamages();
}

void TestKeptState::damagedFromTheFirstCountsForNothing()
{
    QFETCH(QString, fault);
    damage(QString::fromLatin1(QTest::currentDataTag()));
    Daemon daemon;
    daemon.setWrapper({QStringLiteral("setpriv"), QStringLiteral("--bounding-set=-all")});
    QVERIFY(daemon.start());
    QCOMPARE(Client().policy(Camera), QVariant(true));
    QCOMPARE(pluginLines(daemon, 0), QStringList(neverGoodLine(fault)));
    QVERIFY(!QFile::exists(Kept));
}

void TestKeptState::mendedFileIsInForce()
{
    Files::write(Path, CameraLocked);
    Daemon daemon;
    QVERIFY(daemon.start());
    damage(QStringLiteral("pipe"));
    QVERIFY(daemon.waitForLog(keptLine(QStringLiteral("is no regular file"))));

    Files::replace(Path, "[lock]\npolicies=VpnEnabled\n");
    QVERIFY(daemon.waitForLog(InForceAgain));
    QVERIFY(Client().setPolicy(Camera, true));
    QVERIFY(!Client().setPolicy(QStringLiteral("VpnEnabled"), true));
    QCOMPARE(pluginLines(daemon, 0),
             QStringList({keptLine(QStringLiteral("is no regular file")), InForceAgain}));
}

/// Without the file nothing is locked, and what it once held does not come back.
void TestKeptState::removedFileIsForgotten()
{
    Files::write(Path, CameraLocked);
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(Path));
    QVERIFY(daemon.waitForLog(
        QStringLiteral("info|default|filelock: %1 is not there: nothing is in force").arg(Path)));
    QVERIFY(!QFile::exists(Kept));
    QCOMPARE(daemon.stop(), 0);

    damage(QStringLiteral("malformed"));
    const int mark = daemon.mark();
    QVERIFY(daemon.start());
    QCOMPARE(pluginLines(daemon, mark), QStringList(neverGoodLine(QStringLiteral("is malformed"))));
    QVERIFY(Client().setPolicy(Camera, true));
}

void TestKeptState::killLosesNothing()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Files::replace(Path, CameraLocked);
    QVERIFY(daemon.waitForLog(InForceAgain));
    daemon.kill();
    damage(QStringLiteral("empty"));
    QVERIFY(daemon.start());
    QVERIFY(!Client().setPolicy(Camera, true));
}

void TestKeptState::keptForRootAloneAndWrittenWhenItChanges()
{
    Files::write(Path, CameraLocked);
    Daemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot kept = Files::snapshot(Kept);
    QCOMPARE(kept.content, CameraLocked);
    struct stat file;
    struct stat directory;
    QCOMPARE(stat(qPrintable(Kept), &file), 0);
    QCOMPARE(stat(qPrintable(QFileInfo(Kept).path()), &directory), 0);
    QCOMPARE(file.st_mode, mode_t(S_IFREG | 0600));
    QCOMPARE(directory.st_mode, mode_t(S_IFDIR | 0700));
    QCOMPARE(stat("/var/lib/govd", &directory), 0);
    QCOMPARE(directory.st_mode, mode_t(S_IFDIR | 0755));

    QCOMPARE(daemon.stop(), 0);
    QVERIFY(daemon.start());
    QCOMPARE(Files::snapshot(Kept), kept);
    Files::replace(Path, CameraLocked + "# more\n");
    QTRY_COMPARE(Files::snapshot(Kept).content, CameraLocked + "# more\n");
}

void TestKeptState::stateThatCannotBeKeptIsTold()
{
    QVERIFY(QDir().mkpath(QFileInfo(Kept).path()));
    const Mount disk = Mount::readOnly(QStringLiteral("/var/lib/govd"));
    Files::write(Path, CameraLocked);
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!Client().setPolicy(Camera, true));
    const QStringList lines = pluginLines(daemon, 0);
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.at(0).startsWith(QLatin1String("warning|default|filelock: ")));
    QVERIFY(lines.at(0).contains(Kept));
}

void TestKeptState::damagedKeptStateCountsForNothing()
{
    Files::write(Kept, "[lock]\npolicies=NoSuchPolicy\n");
    damage(QStringLiteral("empty"));
    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(pluginLines(daemon, 0), QStringList(neverGoodLine(QStringLiteral("is empty"))));
    QVERIFY(Client().setPolicy(Camera, true));
}

void TestKeptState::linkIsFollowed()
{
    Files::write(QStringLiteral("/etc/govd/profile"), CameraLocked);
    QVERIFY(QFile::link(QStringLiteral("profile"), Path));
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!Client().setPolicy(Camera, true));
    Files::write(QStringLiteral("/etc/govd/profile"), "[lock]\npolicies=\n");
    QTRY_VERIFY(Client().setPolicy(Camera, true));
}

QTEST_GUILESS_MAIN(TestKeptState)
#include "tst_keptstate.moc"
