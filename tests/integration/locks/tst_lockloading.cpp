// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/pluginfile.h"
#include "support/watcheddaemon.h"

#include <QDir>
#include <QJsonArray>
#include <QTest>

using namespace Support;

namespace {

const QString Browser = QStringLiteral("BrowserEnabled");
const QString ChildNotes = QStringLiteral("/run/govd-test-child");

QStringList pluginLines(WatchedDaemon &daemon)
{
    return daemon.logged().filter(QStringLiteral("lugin"));
}

QStringList childNotes()
{
    return QString::fromUtf8(Files::read(ChildNotes)).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

class TestLockLoading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void withoutADirectoryEverythingIsFree();
    void directoryWithoutPluginsIsSilent();
    void onlyFilesNamedSoAreLoaded_data();
    void onlyFilesNamedSoAreLoaded();
    void subdirectoryIsNoPlugin();
    void eachPluginIsAskedOnceForItsNameAndItsKeys();
    void keysAreFixedAtStart();
    void pluginAddedLaterIsNotLoaded();
    void laterPluginOfANameReplacesTheEarlier();
    void replacedPluginIsIgnored();
    void pluginsAreChildrenOfTheRestrictionInTheMainThread();
    void pluginsAreDeletedWhenTheDaemonEnds();
    void replacedPluginIsNobodysChild();
};

void TestLockLoading::init()
{
    Files::reset();
    QVERIFY(QDir(LockPlugin::directory()).removeRecursively());
    QFile::remove(ChildNotes);
}

void TestLockLoading::withoutADirectoryEverythingIsFree()
{
    QVERIFY(!QFileInfo::exists(LockPlugin::directory()));
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(pluginLines(daemon), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QVERIFY(daemon.change(Camera, false));
}

void TestLockLoading::directoryWithoutPluginsIsSilent()
{
    Files::write(LockPlugin::directory() + QStringLiteral("readme"), "No plugin\n");
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(pluginLines(daemon), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestLockLoading::onlyFilesNamedSoAreLoaded_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("isLoaded");
    QTest::newRow("so") << QStringLiteral("lock.so") << true;
    QTest::newRow("two dots") << QStringLiteral("lock.1.so") << true;
    QTest::newRow("blank and accent") << QStringLiteral("my löck.so") << true;
    QTest::newRow("version behind") << QStringLiteral("lock.so.1") << false;
    QTest::newRow("backup") << QStringLiteral("lock.so~") << false;
    QTest::newRow("no ending") << QStringLiteral("lock") << false;
    QTest::newRow("other ending") << QStringLiteral("lockso") << false;
    QTest::newRow("hidden") << QStringLiteral(".lock.so") << false;
}

void TestLockLoading::onlyFilesNamedSoAreLoaded()
{
    QFETCH(QString, file);
    QFETCH(bool, isLoaded);
    LockPlugin plugin(file, QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    plugin.setLocked({Camera});

    QCOMPARE(!plugin.calls().isEmpty(), isLoaded);
    QCOMPARE(Caller().policy(Camera).value(), QVariant(!isLoaded));
    QCOMPARE(pluginLines(daemon), QStringList());
}

void TestLockLoading::subdirectoryIsNoPlugin()
{
    QVERIFY(QDir().mkpath(LockPlugin::directory() + QStringLiteral("folder.so")));
    LockPlugin plugin(QStringLiteral("folder.so/lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(pluginLines(daemon), QStringList());
    QCOMPARE(plugin.calls(), QStringList());
}

void TestLockLoading::eachPluginIsAskedOnceForItsNameAndItsKeys()
{
    LockPlugin one(QStringLiteral("one.so"), QStringLiteral("one"), {Camera});
    LockPlugin two(QStringLiteral("two.so"), QStringLiteral("two"), {});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    one.announce(Camera, false);
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QVERIFY(daemon.change(Camera, false));

    const QStringList introduction{QStringLiteral("name"), QStringLiteral("supportedPolicies")};
    QCOMPARE(one.calls().mid(0, 2), introduction);
    QCOMPARE(one.calls().count(QStringLiteral("name")), 1);
    QCOMPARE(one.calls().count(QStringLiteral("supportedPolicies")), 1);
    QCOMPARE(two.calls(), introduction);
}

void TestLockLoading::keysAreFixedAtStart()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.setState({{QStringLiteral("name"), QStringLiteral("lock")},
                     {QStringLiteral("supported"), QJsonArray{Browser}},
                     {QStringLiteral("locked"), QJsonArray{Browser, Camera}}});

    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QCOMPARE(Caller().policy(Browser).value(), QVariant(true));
}

void TestLockLoading::pluginAddedLaterIsNotLoaded()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    plugin.setLocked({Camera});

    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QCOMPARE(plugin.calls(), QStringList());
}

/// Later in the listing of the directory, whose order is its own affair.
void TestLockLoading::laterPluginOfANameReplacesTheEarlier()
{
    LockPlugin one(QStringLiteral("one.so"), QStringLiteral("same"), {Camera});
    LockPlugin two(QStringLiteral("two.so"), QStringLiteral("same"), {Browser});
    one.setLocked({Camera});
    two.setLocked({Browser});
    const QStringList listing =
        QDir(LockPlugin::directory())
            .entryList({QStringLiteral("*.so")}, QDir::Files, QDir::Unsorted);
    QCOMPARE(listing.size(), 2);
    const bool isTwoLater = listing.last() == QStringLiteral("two.so");
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(pluginLines(daemon), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(isTwoLater));
    QCOMPARE(Caller().policy(Browser).value(), QVariant(!isTwoLater));
}

void TestLockLoading::replacedPluginIsIgnored()
{
    LockPlugin one(QStringLiteral("one.so"), QStringLiteral("same"), {Camera});
    LockPlugin two(QStringLiteral("two.so"), QStringLiteral("same"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const bool isTwoKept = two.calls().contains(QStringLiteral("supportedPolicies"));
    LockPlugin &kept = isTwoKept ? two : one;
    LockPlugin &replaced = isTwoKept ? one : two;
    daemon.forget();

    replaced.setLocked({Camera});
    replaced.announce(Camera, false);
    replaced.announce(Camera, true);
    QCOMPARE(daemon.announcements(), QStringList());
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QCOMPARE(replaced.calls().filter(QStringLiteral("policyIsLocked")), QStringList());
    QCOMPARE(replaced.calls().filter(QStringLiteral("supportedPolicies")), QStringList());

    kept.announce(Camera, false);
    QCOMPARE(daemon.announcements(), QStringList(daemon.announcement(Camera, true)));
}

void TestLockLoading::pluginsAreChildrenOfTheRestrictionInTheMainThread()
{
    const PluginFile child(QStringLiteral("child"), QStringLiteral("child.so"));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(ChildNotes, "");

    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));

    QCOMPARE(childNotes(),
             QStringList({QStringLiteral("PolicyRestriction"), QStringLiteral("main thread")}));
}

void TestLockLoading::pluginsAreDeletedWhenTheDaemonEnds()
{
    const PluginFile child(QStringLiteral("child"), QStringLiteral("child.so"));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Files::write(ChildNotes, "");

    QCOMPARE(daemon.process().stop(), 0);

    QCOMPARE(childNotes(), QStringList(QStringLiteral("deleted by its parent")));
}

void TestLockLoading::replacedPluginIsNobodysChild()
{
    const PluginFile one(QStringLiteral("child"), QStringLiteral("one.so"));
    const PluginFile two(QStringLiteral("child"), QStringLiteral("two.so"));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.process().stop(), 0);

    QCOMPARE(childNotes().count(QStringLiteral("deleted by its parent")), 1);
}

QTEST_GUILESS_MAIN(TestLockLoading)
#include "tst_lockloading.moc"
