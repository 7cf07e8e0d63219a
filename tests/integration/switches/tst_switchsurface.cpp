// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include <QDBusArgument>
#include <QtTest>

using namespace Support;

namespace {

const QString Lens = QStringLiteral("lens");

QDBusMessage types(Client &client, const QString &key)
{
    return client.call(QStringLiteral("Switch"), QStringLiteral("KeyPolicyTypes"), {key});
}

QList<int> numbers(const QDBusMessage &reply)
{
    return qdbus_cast<QList<int>>(reply.arguments().value(0));
}

} // namespace

/// What the daemon tells of access switches.
class TestSwitchSurface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void valueIsWhatThePluginTells_data();
    void valueIsWhatThePluginTells();
    void valueIsAskedAfreshEachTime();
    void unknownSwitchReadsFalse();
    void withoutAPluginThereIsNothing();
    void keysAreThoseOfThePlugin();
    void keysStayInTheOrderOfTheTable();
    void typesAreThoseOfThePlugin_data();
    void typesAreThoseOfThePlugin();
    void announcedValueIsPassedOnWithoutAsking();
};

void TestSwitchSurface::init()
{
    Files::reset();
}

void TestSwitchSurface::valueIsWhatThePluginTells_data()
{
    QTest::addColumn<QJsonValue>("told");
    QTest::addColumn<bool>("value");
    QTest::addColumn<QStringList>("log");
    const auto failure = [](const char *code) {
        return texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: "
                      "\"lens\""})
            << QLatin1String("warning|default|Return code: ") + QLatin1String(code);
    };
    const QStringList unknown = texts({"warning|default|Unknown value type \"lens\""});
    QTest::newRow("on") << QJsonValue(true) << true << QStringList();
    QTest::newRow("off") << QJsonValue(false) << false << QStringList();
    QTest::newRow("code 0") << QJsonValue(0) << false << failure("0");
    QTest::newRow("code 1") << QJsonValue(1) << false << failure("1");
    QTest::newRow("code -22") << QJsonValue(-22) << false << failure("-22");
    QTest::newRow("text") << QJsonValue(QStringLiteral("true")) << false << unknown;
    QTest::newRow("nothing") << QJsonValue() << false << unknown;
    QTest::newRow("list") << QJsonValue(QJsonArray{true}) << false << unknown;
}

void TestSwitchSurface::valueIsWhatThePluginTells()
{
    QFETCH(const QJsonValue, told);
    QFETCH(const bool, value);
    QFETCH(const QStringList, log);
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, told);
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = plugin.mark();
    const int logMark = daemon.mark();
    QCOMPARE(Client().switchValue(Lens), QVariant(value));
    QCOMPARE(plugin.calls(mark), texts({"keyValue lens"}));
    QCOMPARE(daemon.log(logMark), log);
}

void TestSwitchSurface::valueIsAskedAfreshEachTime()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.switchValue(Lens), QVariant(false));
    plugin.setSwitch(Lens, {}, true);
    QCOMPARE(client.switchValue(Lens), QVariant(true));
}

void TestSwitchSurface::unknownSwitchReadsFalse()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = daemon.mark();
    QCOMPARE(Client().switchValue(QStringLiteral("no \"such\" switch")), QVariant(false));
    QCOMPARE(daemon.log(mark),
             texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: "
                    "\"no \\\"such\\\" switch\"",
                    "warning|default|Return code: -1"}));
}

void TestSwitchSurface::withoutAPluginThereIsNothing()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = daemon.mark();
    Client client;
    QCOMPARE(client.switchValue(Lens), QVariant(false));
    QCOMPARE(types(client, Lens).signature(), QStringLiteral("ai"));
    QCOMPARE(numbers(types(client, Lens)), QList<int>());
    const QDBusMessage keys = client.call(QStringLiteral("Switch"), QStringLiteral("Keys"));
    QCOMPARE(keys.signature(), QStringLiteral("as"));
    QCOMPARE(keys.arguments(), QVariantList{QStringList()});
    QCOMPARE(daemon.log(mark), QStringList());
}

void TestSwitchSurface::keysAreThoseOfThePlugin()
{
    SwitchPlugin plugin;
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QCOMPARE(client.switches(), QStringList());
    plugin.setSwitch(Lens, {1}, true);
    plugin.setSwitch(QStringLiteral("Funk aus"), {}, 5);
    QStringList keys = client.switches();
    keys.sort();
    QCOMPARE(keys, texts({"Funk aus", "lens"}));
}

void TestSwitchSurface::keysStayInTheOrderOfTheTable()
{
    SwitchPlugin plugin;
    for (int i = 0; i < 20; ++i)
        plugin.setSwitch(QStringLiteral("switch %1").arg(i), {}, true);
    Daemon daemon;
    daemon.setEnvironment(QStringLiteral("QT_HASH_SEED"), QStringLiteral("0"));
    QVERIFY(daemon.start());
    Client client;
    const QStringList keys = client.switches();
    QCOMPARE(keys.size(), 20);
    QStringList sorted = keys;
    sorted.sort();
    QVERIFY(keys != sorted);
    QCOMPARE(client.switches(), keys);
}

void TestSwitchSurface::typesAreThoseOfThePlugin_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("in the plugin's order") << Lens << QList<int>{45, 1, 20};
    QTest::newRow("whatever they are")
        << QStringLiteral("odd") << QList<int>{0, -1, 1, 1, 46, 2147483647};
    QTest::newRow("none") << QStringLiteral("idle") << QList<int>();
    QTest::newRow("unknown switch") << QStringLiteral("gate") << QList<int>();
    QTest::newRow("other letters") << QStringLiteral("Lens") << QList<int>();
}

void TestSwitchSurface::typesAreThoseOfThePlugin()
{
    QFETCH(const QString, key);
    QFETCH(const QList<int>, expected);
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {45, 1, 20}, true);
    plugin.setSwitch(QStringLiteral("odd"), {0, -1, 1, 1, 46, 2147483647}, true);
    plugin.setSwitch(QStringLiteral("idle"), {}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    const int mark = daemon.mark();
    Client client;
    const QDBusMessage reply = types(client, key);
    QCOMPARE(reply.signature(), QStringLiteral("ai"));
    QCOMPARE(numbers(reply), expected);
    QCOMPARE(daemon.log(mark), QStringList());
}

void TestSwitchSurface::announcedValueIsPassedOnWithoutAsking()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {}, false);
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;
    const int mark = plugin.mark();
    plugin.announce(Lens, true);
    monitor.settle();
    const QVector<BusMessage> signalled = monitor.announcements(QStringLiteral("SwitchChanged"));
    QCOMPARE(signalled.size(), 1);
    QCOMPARE(signalled.first().arguments, QVariantList({Lens, true}));
    QCOMPARE(plugin.calls(mark).filter(QStringLiteral("keyValue")), QStringList());
    QCOMPARE(Client().switchValue(Lens), QVariant(false));
}

QTEST_GUILESS_MAIN(TestSwitchSurface)
#include "tst_switchsurface.moc"
