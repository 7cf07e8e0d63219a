// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/brokenplugin.h"
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/pluginfile.h"
#include "support/watcheddaemon.h"

#include <QDir>
#include <QPluginLoader>
#include <QTest>

using namespace Support;

namespace {

const QString Browser = QStringLiteral("BrowserEnabled");
const QString ChildNotes = QStringLiteral("/run/govd-test-child");

/// What Qt says of a library that cannot be loaded, asked without the daemon.
QString failure(const QString &path)
{
    QPluginLoader loader(path);
    loader.instance();
    return QStringLiteral("warning|default|Cannot load plugin %1: %2")
        .arg(path, loader.errorString());
}

QStringList pluginLines(WatchedDaemon &daemon)
{
    return daemon.logged().filter(QStringLiteral("lugin"));
}

} // namespace

/// Files among the lock plugins that are none, or none that can be loaded.
class TestLockFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void fileThatIsNoPluginIsReported_data();
    void fileThatIsNoPluginIsReported();
    void libraryThatCannotBeLoadedIsReported_data();
    void libraryThatCannotBeLoadedIsReported();
    void pluginOfAnotherKindIsSkippedSilently();
    void failuresDoNotStopTheOthers();
    void pathIsPrintedAsItIs();
};

void TestLockFailures::init()
{
    Files::reset();
    QVERIFY(QDir(LockPlugin::directory()).removeRecursively());
    QFile::remove(ChildNotes);
}

void TestLockFailures::fileThatIsNoPluginIsReported_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("text") << int(BrokenPlugin::NoLibrary);
    QTest::newRow("no root object") << int(BrokenPlugin::NoRoot);
}

void TestLockFailures::fileThatIsNoPluginIsReported()
{
    QFETCH(int, kind);
    const QString path = LockPlugin::directory() + QStringLiteral("broken.so");
    const BrokenPlugin plugin(static_cast<BrokenPlugin::Kind>(kind), path);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(pluginLines(daemon), QStringList(failure(path)));
    QVERIFY(daemon.logged().contains(failure(path)));
    QVERIFY(failure(path).size() > path.size() + 40); // the reason is no empty text
}

void TestLockFailures::libraryThatCannotBeLoadedIsReported_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<int>("size");
    QTest::newRow("unresolved symbol") << QStringLiteral("unresolved") << -1;
    QTest::newRow("cut off") << QStringLiteral("child") << 4000;
    QTest::newRow("empty") << QStringLiteral("child") << 0;
}

void TestLockFailures::libraryThatCannotBeLoadedIsReported()
{
    QFETCH(QString, plugin);
    QFETCH(int, size);
    const PluginFile file(plugin, QStringLiteral("broken.so"), size);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    const QStringList lines = pluginLines(daemon);
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.at(0).startsWith(
        QStringLiteral("warning|default|Cannot load plugin %1: ").arg(file.path())));
    // The program that loads it differs, and so does what it lacks first.
    if (plugin == QStringLiteral("unresolved"))
        QVERIFY(lines.at(0).contains(QStringLiteral("undefined symbol: govdTestNowhere")));
    else
        QCOMPARE(lines.at(0), failure(file.path()));
}

void TestLockFailures::pluginOfAnotherKindIsSkippedSilently()
{
    const BrokenPlugin plugin(BrokenPlugin::OtherInterface,
                              LockPlugin::directory() + QStringLiteral("other.so"));
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(pluginLines(daemon), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    const QByteArray maps =
        Files::read(QStringLiteral("/proc/%1/maps").arg(daemon.process().processId()));
    QVERIFY(maps.contains("/govd/other.so")); // it stays loaded
}

void TestLockFailures::failuresDoNotStopTheOthers()
{
    const QString path = LockPlugin::directory();
    const BrokenPlugin first(BrokenPlugin::NoLibrary, path + QStringLiteral("a.so"));
    LockPlugin one(QStringLiteral("b.so"), QStringLiteral("one"), {Camera});
    const BrokenPlugin second(BrokenPlugin::OtherInterface, path + QStringLiteral("c.so"));
    const BrokenPlugin third(BrokenPlugin::NoRoot, path + QStringLiteral("d.so"));
    LockPlugin two(QStringLiteral("e.so"), QStringLiteral("two"), {Browser});
    one.setLocked({Camera});
    two.setLocked({Browser});
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QStringList lines = pluginLines(daemon);
    lines.sort();
    QCOMPARE(lines, QStringList({failure(first.path()), failure(third.path())}));
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QCOMPARE(Caller().policy(Browser).value(), QVariant(false));
}

/// Without the quotes and escapes that other lines have.
void TestLockFailures::pathIsPrintedAsItIs()
{
    const QString path = LockPlugin::directory() + QStringLiteral("a \"b\" 100% %s ö.so");
    const BrokenPlugin plugin(BrokenPlugin::NoLibrary, path);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(pluginLines(daemon), QStringList(failure(path)));
}

QTEST_GUILESS_MAIN(TestLockFailures)
#include "tst_lockfailures.moc"
