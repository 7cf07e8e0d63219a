// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");
const QString Switch = QStringLiteral("Switch");

QVariantList toVariants(const QList<int> &numbers)
{
    QVariantList list;
    for (const int number : numbers)
        list.append(number);
    return list;
}

QVariantList policyTypes(const QString &key)
{
    return Caller().call(Switch, QStringLiteral("KeyPolicyTypes"), {key}).value().toList();
}

QStringList keys()
{
    return Caller().call(Switch, QStringLiteral("Keys"), {}).value().toStringList();
}

} // namespace

/// What clients read of the access switches, all of it the plugin's.
class TestSwitchValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void values_data();
    void values();
    void unknownSwitchIsAskedOfThePlugin();
    void repliesHaveTheirTypes();
    void keysAreThoseOfThePlugin();
    void keysStayInTheOrderOfTheTable();
    void policyTypesAreThoseOfThePlugin_data();
    void policyTypesAreThoseOfThePlugin();
    void policyTypesOfAnUnknownSwitchAreNone();
    void everyReadAsksThePluginAfresh();
    void readingChangesNothing();
};

void TestSwitchValues::init()
{
    Files::reset();
}

void TestSwitchValues::values_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<bool>("read");
    QTest::addColumn<QStringList>("log");

    const auto failure = [](const char *code) {
        return QStringList{
            QStringLiteral("warning|default|AccessSwitch plugin failed to retrieve value for key: "
                           "\"cellular\""),
            QLatin1String("warning|default|Return code: ") + QLatin1String(code)};
    };
    const QStringList unknown = texts({"warning|default|Unknown value type \"cellular\""});

    QTest::newRow("true") << QJsonValue(true) << true << QStringList();
    QTest::newRow("false") << QJsonValue(false) << false << QStringList();
    QTest::newRow("failure code 3") << QJsonValue(3) << false << failure("3");
    QTest::newRow("failure code -17") << QJsonValue(-17) << false << failure("-17");
    QTest::newRow("failure code 0") << QJsonValue(0) << false << failure("0");
    QTest::newRow("failure code 1") << QJsonValue(1) << false << failure("1");
    QTest::newRow("text") << QJsonValue(QStringLiteral("true")) << false << unknown;
    QTest::newRow("invalid") << QJsonValue() << false << unknown;
    QTest::newRow("list") << QJsonValue(QJsonArray{true}) << false << unknown;
}

void TestSwitchValues::values()
{
    QFETCH(QJsonValue, value);
    QFETCH(bool, read);
    QFETCH(QStringList, log);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, value);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    const Reply reply = Caller().switchValue(Cellular);
    QCOMPARE(reply.signature, QStringLiteral("v"));
    QCOMPARE(reply.value().userType(), int(QMetaType::Bool));
    QCOMPARE(reply.value(), QVariant(read));
    QCOMPARE(daemon.logged(), log);
    QCOMPARE(plugin.calls(before), texts({"keyValue cellular"}));
}

void TestSwitchValues::unknownSwitchIsAskedOfThePlugin()
{
    SwitchPlugin plugin;
    plugin.setState({{QStringLiteral("unknown"), -2}});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    QCOMPARE(Caller().switchValue(QStringLiteral("a \"b\"")).value(), QVariant(false));
    QCOMPARE(daemon.logged(),
             texts({"warning|default|AccessSwitch plugin failed to retrieve value for key: "
                    "\"a \\\"b\\\"\"",
                    "warning|default|Return code: -2"}));
    QCOMPARE(plugin.calls(before), texts({"keyValue a \"b\""}));
}

void TestSwitchValues::repliesHaveTheirTypes()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().call(Switch, QStringLiteral("Keys"), {}).signature, QStringLiteral("as"));
    QCOMPARE(Caller().call(Switch, QStringLiteral("KeyPolicyTypes"), {Cellular}).signature,
             QStringLiteral("ai"));
    QCOMPARE(Caller().switchValue(Cellular).signature, QStringLiteral("v"));
    // The description of the interface says "i".
    QCOMPARE(Caller().setSwitch(Cellular, true).signature, QStringLiteral("b"));
}

void TestSwitchValues::keysAreThoseOfThePlugin()
{
    SwitchPlugin plugin;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(keys(), QStringList());

    plugin.setSwitch(QStringLiteral("one"), {1, 2}, true);
    plugin.setSwitch(QStringLiteral("Zwei"), {}, false);
    plugin.setSwitch(QString(), {5}, 7);
    QStringList found = keys();
    found.sort();
    QCOMPARE(found, texts({"", "Zwei", "one"}));
}

void TestSwitchValues::keysStayInTheOrderOfTheTable()
{
    SwitchPlugin plugin;
    for (int i = 0; i < 20; ++i)
        plugin.setSwitch(QString::number(i), {i}, true);
    WatchedDaemon daemon;
    daemon.process().setEnvironment(QStringLiteral("QT_HASH_SEED"), QStringLiteral("0"));
    QVERIFY(daemon.start());

    const QStringList found = keys();
    QStringList sorted = found;
    sorted.sort();
    QVERIFY(found != sorted);
    QCOMPARE(sorted.removeDuplicates(), 0);
    QCOMPARE(sorted.size(), 20);
    QCOMPARE(keys(), found);
}

void TestSwitchValues::policyTypesAreThoseOfThePlugin_data()
{
    QTest::addColumn<QList<int>>("types");
    QTest::newRow("none") << QList<int>();
    QTest::newRow("one") << QList<int>{1};
    QTest::newRow("unsorted, one twice") << QList<int>{36, 1, 20, 1};
    QTest::newRow("numbers that are no policies") << QList<int>{0, -1, 46, 2147483647, -2147483647};
}

void TestSwitchValues::policyTypesAreThoseOfThePlugin()
{
    QFETCH(QList<int>, types);
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("other"), {7}, true);
    plugin.setSwitch(Cellular, types, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(policyTypes(Cellular), toVariants(types));
}

void TestSwitchValues::policyTypesOfAnUnknownSwitchAreNone()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(policyTypes(QStringLiteral("Cellular")), QVariantList());
    QCOMPARE(policyTypes(QString()), QVariantList());
    QCOMPARE(keys(), QStringList(Cellular)); // asking for it has not made it
    QCOMPARE(daemon.logged(), QStringList());
}

void TestSwitchValues::everyReadAsksThePluginAfresh()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(true));
    const int before = plugin.mark();

    plugin.setSwitch(Cellular, {2, 3}, false);
    QCOMPARE(Caller().switchValue(Cellular).value(), QVariant(false));
    QCOMPARE(policyTypes(Cellular), toVariants({2, 3}));
    QCOMPARE(keys(), QStringList(Cellular));
    QCOMPARE(plugin.calls(before),
             texts({"keyValue cellular", "keyPolicyTypes", "keyPolicyTypes"}));
}

void TestSwitchValues::readingChangesNothing()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, false);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QString policyFile = QStringLiteral("/etc/policy/policy.conf");
    const FileSnapshot policies = Files::snapshot(policyFile);

    Caller().switchValue(Cellular);
    Caller().policy(QStringLiteral("CameraEnabled"));
    policyTypes(Cellular);
    keys();
    QCOMPARE(daemon.messages(),
             texts({"return false", "return false", "return 1", "return cellular"}));
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(Files::snapshot(policyFile), policies);
    QVERIFY(!QFile::exists(QStringLiteral("/etc/policy/switch.conf")));
}

QTEST_GUILESS_MAIN(TestSwitchValues)
#include "tst_switchvalues.moc"
