// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/files.h"
#include "support/mount.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Directory = QStringLiteral("/var/lib/devel-su");
const QString Marker = QStringLiteral("/var/lib/devel-su/.disable");
const QString Shell = QStringLiteral("DeveloperShellEnabled");
const QString CannotDisable = QStringLiteral("warning|default|Failed to disable devel-su");
const QString CannotEnable = QStringLiteral("warning|default|Failed to enable devel-su");

void storeAtStart(bool value)
{
    Files::write(QStringLiteral("/etc/policy/policy.conf"),
                 value ? "[policy]\nDeveloperShellEnabled=true\n"
                       : "[policy]\nDeveloperShellEnabled=false\n");
}

} // namespace

/// The developer shell's file: there while the shell is forbidden.
class TestDeveloperShell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void fileIsThereWhileTheShellIsForbidden();
    void startCreatesDirectoryAndFile();
    void startRemovesTheFile();
    void allowedShellLeavesNothingBehind();
    void presentFileIsLeftAlone();
    void missingFileIsLeftMissing();
    void otherPoliciesDoNotTouchTheFile();
    void fileInPlaceOfTheDirectory();
    void directoryThatCannotBeMade();
    void readOnlyDirectoryFailsCreation();
    void readOnlyDirectoryFailsRemoval();
    void directoryInPlaceOfTheFile();
};

void TestDeveloperShell::fileIsThereWhileTheShellIsForbidden()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(Directory));
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(daemon.set(Shell, false), QVariant(true));
        QVERIFY(Files::snapshot(Marker).exists);
        QCOMPARE(Files::snapshot(Marker).content, QByteArray());
        QCOMPARE(daemon.set(Shell, true), QVariant(true));
        QVERIFY(!QFile::exists(Marker));
        QVERIFY(QFileInfo(Directory).isDir());
    }
    QCOMPARE(daemon.logged(), QStringList());
}

void TestDeveloperShell::startCreatesDirectoryAndFile()
{
    storeAtStart(false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Files::snapshot(Marker).exists);
    QCOMPARE(Files::snapshot(Marker).content, QByteArray());
    QCOMPARE(daemon.process().log().filter(QStringLiteral("devel-su")), QStringList());
}

void TestDeveloperShell::startRemovesTheFile()
{
    Files::write(Marker, {});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(Marker));
}

void TestDeveloperShell::allowedShellLeavesNothingBehind()
{
    storeAtStart(true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(!QFile::exists(Directory));
    QCOMPARE(daemon.process().log().filter(QStringLiteral("devel-su")), QStringList());
}

void TestDeveloperShell::presentFileIsLeftAlone()
{
    storeAtStart(false);
    Files::write(Marker, "the shell's own\n");
    const FileSnapshot before = Files::snapshot(Marker);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Files::snapshot(Marker) == before);
    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(daemon.start());
    QVERIFY(Files::snapshot(Marker) == before);

    QCOMPARE(daemon.set(Shell, true), QVariant(true));
    Files::write(Marker, "the shell's own\n");
    const FileSnapshot made = Files::snapshot(Marker);
    QCOMPARE(daemon.set(Shell, false), QVariant(true));
    QVERIFY(Files::snapshot(Marker) == made);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestDeveloperShell::missingFileIsLeftMissing()
{
    storeAtStart(false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(Marker));
    QCOMPARE(daemon.set(Shell, true), QVariant(true));
    QVERIFY(!QFile::exists(Marker));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestDeveloperShell::otherPoliciesDoNotTouchTheFile()
{
    storeAtStart(false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(Marker)); // it would come back
    for (const char *key : {"CameraEnabled", "DeveloperModeEnabled", "UsbDeveloperModeEnabled"})
        QCOMPARE(daemon.set(QLatin1String(key), false), QVariant(true));
    QCOMPARE(daemon.set(Shell, false), QVariant(true)); // no change either
    QVERIFY(!QFile::exists(Marker));
}

void TestDeveloperShell::fileInPlaceOfTheDirectory()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(Directory, "no directory\n");

    QCOMPARE(daemon.set(Shell, false), QVariant(true));

    QCOMPARE(daemon.logged(), QStringList(CannotDisable));
    QCOMPARE(daemon.said(),
             QStringList({daemon.event(Shell, QStringLiteral("true"), QStringLiteral("false")),
                          daemon.announcement(Shell, false), QStringLiteral("reply true")}));
    QCOMPARE(daemon.policy(Shell), QVariant(false)); // the value counts all the same
    QCOMPARE(daemon.set(Shell, true), QVariant(true));
    QCOMPARE(daemon.logged().size(), 1);
    QCOMPARE(Files::read(Directory), QByteArray("no directory\n"));
}

void TestDeveloperShell::directoryThatCannotBeMade()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    {
        const Mount mount = Mount::readOnly(QStringLiteral("/var/lib"));
        QCOMPARE(daemon.set(Shell, false), QVariant(true));
    }
    QCOMPARE(daemon.logged(), QStringList(CannotDisable));
    QVERIFY(!QFile::exists(Directory));
    QCOMPARE(daemon.set(Shell, true), QVariant(true));
    QCOMPARE(daemon.set(Shell, false), QVariant(true)); // nothing is remembered of a failure
    QVERIFY(QFile::exists(Marker));
    QCOMPARE(daemon.logged(), QStringList(CannotDisable));
}

void TestDeveloperShell::readOnlyDirectoryFailsCreation()
{
    QVERIFY(QDir().mkpath(Directory));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const Mount mount = Mount::readOnly(Directory);
    QCOMPARE(daemon.set(Shell, false), QVariant(true));
    QCOMPARE(daemon.logged(), QStringList(CannotDisable));
    QCOMPARE(daemon.set(Shell, true), QVariant(true)); // nothing to remove
    QCOMPARE(daemon.logged(), QStringList(CannotDisable));
}

void TestDeveloperShell::readOnlyDirectoryFailsRemoval()
{
    storeAtStart(false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const Mount mount = Mount::readOnly(Directory);
    QCOMPARE(daemon.set(Shell, true), QVariant(true));
    QCOMPARE(daemon.logged(), QStringList(CannotEnable));
    QVERIFY(QFile::exists(Marker));
    QCOMPARE(daemon.policy(Shell), QVariant(true));
    QCOMPARE(daemon.set(Shell, false), QVariant(true)); // it is there already
    QCOMPARE(daemon.logged(), QStringList(CannotEnable));
}

void TestDeveloperShell::directoryInPlaceOfTheFile()
{
    const QString inside = Marker + QLatin1String("/inside");
    storeAtStart(false);
    Files::write(inside, "x");
    WatchedDaemon daemon;
    QVERIFY(daemon.process().start());
    QCOMPARE(daemon.logged().filter(QStringLiteral("devel-su")), QStringList());
    daemon.forget();
    QCOMPARE(daemon.set(Shell, true), QVariant(true));
    QCOMPARE(daemon.logged(), QStringList(CannotEnable));
    QCOMPARE(Files::read(inside), QByteArray("x"));
    // At a start the policy is enforced twice: when it is stored, and again with all others.
    QCOMPARE(daemon.process().stop(), 0);
    const int mark = daemon.process().mark();
    QVERIFY(daemon.process().start());
    QCOMPARE(daemon.process().log(mark).filter(QStringLiteral("devel-su")),
             QStringList({CannotEnable, CannotEnable}));
}

QTEST_GUILESS_MAIN(TestDeveloperShell)
#include "tst_developershell.moc"
