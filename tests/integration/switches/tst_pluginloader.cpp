// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/files.h"
#include "support/oddplugin.h"
#include "support/openwatch.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QPluginLoader>
#include <QtTest>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");
const QString Switch = QStringLiteral("Switch");

Reply keys()
{
    return Caller().call(Switch, QStringLiteral("Keys"), {});
}

/// The warning about a plugin that cannot be loaded, with the reason that Qt gives for it.
QString loadWarning()
{
    QPluginLoader loader(SwitchPlugin::location());
    loader.load();
    QString text;
    QDebug(&text) << "warning|default|Failed to load plugin" << SwitchPlugin::location()
                  << loader.errorString();
    return text.trimmed();
}

/// How many objects of the test's plugin live in a process: each holds its pipe open.
int objects(qint64 process)
{
    int count = 0;
    const QFileInfoList descriptors =
        QDir(QStringLiteral("/proc/%1/fd").arg(process)).entryInfoList(QDir::System | QDir::Files);
    for (const QFileInfo &descriptor : descriptors)
        count += descriptor.symLinkTarget().endsWith(QLatin1String(".so.orders")) ? 1 : 0;
    return count;
}

} // namespace

/// The access-switch plugin: found, loaded once, or done without.
class TestPluginLoader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void withoutPluginThereAreNoSwitches();
    void danglingLinkIsNoPlugin();
    void unusableFiles_data();
    void unusableFiles();
    void uselessPluginIsUnloaded();
    void directoryIsNoPlugin();
    void usablePlugin();
    void linkToAPluginIsAPlugin();
    void rootObjectDecidesWhatAPluginIs();
    void pluginIsLoadedOnce();
    void pluginInstalledLaterIsSeenAtTheNextStart();
    void pluginRemovedLaterGoesOnWorking();
};

void TestPluginLoader::init()
{
    Files::reset();
}

void TestPluginLoader::withoutPluginThereAreNoSwitches()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(keys().signature, QStringLiteral("as"));
    QCOMPARE(keys().value().toList(), QVariantList());
    const Reply types = Caller().call(Switch, QStringLiteral("KeyPolicyTypes"), {Cellular});
    QCOMPARE(types.signature, QStringLiteral("ai"));
    QCOMPARE(types.value().toList(), QVariantList());
    const Reply value = Caller().switchValue(Cellular);
    QCOMPARE(value.signature, QStringLiteral("v"));
    QCOMPARE(value.value(), QVariant(false));
    const Reply write = Caller().setSwitch(Cellular, true);
    QCOMPARE(write.signature, QStringLiteral("b"));
    QCOMPARE(write.value(), QVariant(false));

    QCOMPARE(daemon.complaints(), QStringList());
    QCOMPARE(daemon.recorded(), QStringList());
    QVERIFY(!QFile::exists(QStringLiteral("/etc/policy/switch.conf")));
}

void TestPluginLoader::danglingLinkIsNoPlugin()
{
    QDir().mkpath(QFileInfo(SwitchPlugin::location()).path());
    QVERIFY(QFile::link(QStringLiteral("/nonexistent.so"), SwitchPlugin::location()));
    WatchedDaemon daemon;
    const bool started = daemon.startObserved();
    QFile::remove(SwitchPlugin::location());

    QVERIFY(started);
    QCOMPARE(keys().value().toList(), QVariantList());
    QCOMPARE(daemon.complaints(), QStringList());
}

void TestPluginLoader::unusableFiles_data()
{
    QTest::addColumn<QByteArray>("library");
    QTest::addColumn<bool>("isWarned");
    QTest::newRow("text") << QByteArray("notalibrary.txt") << true;
    QTest::newRow("library that is no plugin") << QByteArray("noroot.so") << true;
    QTest::newRow("plugin with a missing symbol") << QByteArray("unresolved.so") << true;
    QTest::newRow("plugin without a root object") << QByteArray("noobject.so") << false;
    QTest::newRow("plugin of another interface") << QByteArray("otherinterface.so") << false;
    QTest::newRow("plugin of the interface by name only") << QByteArray("impostor.so") << false;
}

void TestPluginLoader::unusableFiles()
{
    QFETCH(QByteArray, library);
    QFETCH(bool, isWarned);
    const OddPlugin plugin(library.constData());
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(daemon.complaints(), isWarned ? QStringList(loadWarning()) : QStringList());
    daemon.forget();
    QCOMPARE(keys().value().toList(), QVariantList());
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
    QCOMPARE(Caller().setSwitch(Cellular, true).value(), QVariant(false));
    QCOMPARE(Caller().setPolicy(QStringLiteral("CameraEnabled"), false).value(), QVariant(true));
    QCOMPARE(daemon.complaints(), QStringList());
}

/// Qt keeps the code of a plugin in memory even so, but the object goes.
void TestPluginLoader::uselessPluginIsUnloaded()
{
    const OddPlugin plugin("impostor.so");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(plugin.calls(), texts({"made", "deleted"}));
}

void TestPluginLoader::directoryIsNoPlugin()
{
    QVERIFY(QDir().mkpath(SwitchPlugin::location()));
    WatchedDaemon daemon;
    const bool started = daemon.startObserved();
    const QString warning = loadWarning();
    QVERIFY(QDir().rmdir(SwitchPlugin::location()));

    QVERIFY(started);
    QCOMPARE(daemon.complaints(), QStringList(warning));
    QCOMPARE(keys().value().toList(), QVariantList());
}

void TestPluginLoader::usablePlugin()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {5}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(keys().value().toList(), QVariantList{Cellular});
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(true));
    QCOMPARE(daemon.complaints(), QStringList());
}

void TestPluginLoader::linkToAPluginIsAPlugin()
{
    const OddPlugin plugin("mislabelled.so");
    const QString target = plugin.path() + QLatin1String(".real");
    QVERIFY(QFile::rename(plugin.path(), target));
    QVERIFY(QFile::link(target, plugin.path()));
    WatchedDaemon daemon;
    const bool started = daemon.startObserved();
    QFile::remove(target);

    QVERIFY(started);
    QCOMPARE(keys().value().toList(), QVariantList{QStringLiteral("mislabelled")});
    QCOMPARE(daemon.complaints(), QStringList());
}

void TestPluginLoader::rootObjectDecidesWhatAPluginIs()
{
    const OddPlugin plugin("mislabelled.so");
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QCOMPARE(keys().value().toList(), QVariantList{QStringLiteral("mislabelled")});
    QCOMPARE(daemon.complaints(), QStringList());
}

void TestPluginLoader::pluginIsLoadedOnce()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    const OpenWatch watch(plugin.path());
    QVERIFY(daemon.start());
    const int opened = watch.opened();
    QVERIFY(opened > 0);

    QCOMPARE(keys().value().toList(), QVariantList{Cellular});
    QCOMPARE(Caller().setSwitch(Cellular, false).value(), QVariant(true));
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
    QCOMPARE(Caller().policy(QStringLiteral("CameraEnabled")).value(), QVariant(false));
    QCOMPARE(watch.opened(), opened);
    QCOMPARE(objects(daemon.process().processId()), 1);
}

void TestPluginLoader::pluginInstalledLaterIsSeenAtTheNextStart()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(keys().value().toList(), QVariantList());

    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    QCOMPARE(keys().value().toList(), QVariantList());
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
    QCOMPARE(Caller().setSwitch(Cellular, true).value(), QVariant(false));
    QCOMPARE(plugin.calls(), QStringList());

    QCOMPARE(daemon.process().stop(), 0);
    QVERIFY(daemon.start());
    QCOMPARE(keys().value().toList(), QVariantList{Cellular});
}

void TestPluginLoader::pluginRemovedLaterGoesOnWorking()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::remove(plugin.path()));

    QCOMPARE(keys().value().toList(), QVariantList{Cellular});
    QCOMPARE(Caller().setSwitch(Cellular, false).value(), QVariant(true));
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
}

QTEST_GUILESS_MAIN(TestPluginLoader)
#include "tst_pluginloader.moc"
