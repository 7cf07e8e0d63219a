// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QtTest>

using namespace Support;

namespace {

const QString Cellular = QStringLiteral("cellular");

} // namespace

/// Values of switches, and of policies under them, that are no booleans.
class TestSwitchValueKinds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void written_data();
    void written();
    void announced_data();
    void announced();
    void announcedButNotSendable();
    void storedOfAPolicy_data();
    void storedOfAPolicy();
};

void TestSwitchValueKinds::init()
{
    Files::reset();
}

void TestSwitchValueKinds::written_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("saved");

    const QString on = QStringLiteral("true");
    const QString off = QStringLiteral("false");
    QTest::newRow("1") << QVariant(1) << QStringLiteral("1") << on;
    QTest::newRow("0") << QVariant(0) << QStringLiteral("0") << off;
    QTest::newRow("text no") << QVariant(QStringLiteral("no")) << QStringLiteral("no") << on;
    QTest::newRow("text 0") << QVariant(QStringLiteral("0")) << QStringLiteral("0") << off;
    QTest::newRow("text FALSE") << QVariant(QStringLiteral("FALSE")) << QStringLiteral("FALSE")
                                << off;
    QTest::newRow("empty text") << QVariant(QLatin1String("")) << QString() << off;
    QTest::newRow("container") << QVariant(QVariantList{true}) << QString() << off;
}

/// The plugin and the event get the value as it is, the file its boolean reading.
void TestSwitchValueKinds::written()
{
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    QFETCH(QString, saved);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int before = plugin.mark();

    QCOMPARE(Caller().setSwitch(Cellular, value).value(), QVariant(true));
    QCOMPARE(plugin.calls(before).filter(QStringLiteral("setKeyValue")),
             QStringList((QLatin1String("setKeyValue cellular ") + text).trimmed()));
    QCOMPARE(Files::values(SwitchFile).value(Cellular), saved);
    QCOMPARE(
        daemon.recorded(),
        QStringList(
            QStringLiteral("Policy cellular changed. Old value true. New value %1.").arg(text)));
    QVERIFY(daemon.process().isRunning());
}

void TestSwitchValueKinds::announced_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QVariant>("sent"); // a number comes from the bus as a double
    QTest::addColumn<bool>("effect");
    QTest::newRow("0") << QJsonValue(0) << QVariant(0.0) << false;
    QTest::newRow("5") << QJsonValue(5) << QVariant(5.0) << true;
    QTest::newRow("text") << QJsonValue(QStringLiteral("off")) << QVariant(QStringLiteral("off"))
                          << true;
    QTest::newRow("text false") << QJsonValue(QStringLiteral("False"))
                                << QVariant(QStringLiteral("False")) << false;
}

void TestSwitchValueKinds::announced()
{
    QFETCH(QJsonValue, value);
    QFETCH(QVariant, sent);
    QFETCH(bool, effect);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.announce(Cellular, value);
    daemon.monitor().settle();
    const auto policies = daemon.monitor().announcements(QStringLiteral("PolicyChanged"));
    QCOMPARE(policies.size(), 1);
    QCOMPARE(policies.first().arguments, (QVariantList{Camera, effect}));
    QCOMPARE(policies.first().arguments.at(1).userType(), int(QMetaType::Bool));
    const auto switches = daemon.monitor().announcements(QStringLiteral("SwitchChanged"));
    QCOMPARE(switches.size(), 1);
    QCOMPARE(switches.first().signature, QStringLiteral("sv"));
    QCOMPARE(switches.first().arguments.at(0), QVariant(Cellular));
    QCOMPARE(switches.first().arguments.at(1).toString(), sent.toString());
    QVERIFY(switches.first().arguments.at(1).userType() != QMetaType::Bool);
    QCOMPARE(QFile::exists(CameraMarker), effect);
}

/// The bus has no word for an invalid value, so the switch itself stays unannounced.
void TestSwitchValueKinds::announcedButNotSendable()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    plugin.announce(Cellular, QJsonValue());
    QCOMPARE(daemon.messages(), texts({"PolicyChanged CameraEnabled false"}));
    QVERIFY(!QFile::exists(CameraMarker));
}

void TestSwitchValueKinds::storedOfAPolicy_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("effect");
    QTest::newRow("1") << QVariant(1) << true;
    QTest::newRow("0") << QVariant(0) << false;
    QTest::newRow("text") << QVariant(QStringLiteral("off")) << true;
    QTest::newRow("text FALSE") << QVariant(QStringLiteral("FALSE")) << false;
}

void TestSwitchValueKinds::storedOfAPolicy()
{
    QFETCH(QVariant, stored);
    QFETCH(bool, effect);
    SwitchPlugin plugin;
    plugin.setSwitch(Cellular, {1}, true);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    // From another value, because an equal one of another type is not stored.
    QCOMPARE(Caller().setPolicy(Camera, !effect).value(), QVariant(true));
    QCOMPARE(Caller().setPolicy(Camera, stored).value(), QVariant(true));
    daemon.forget();

    plugin.announce(Cellular, true);
    QCOMPARE(daemon.messages(),
             (QStringList{QLatin1String("PolicyChanged CameraEnabled ")
                              + QLatin1String(effect ? "true" : "false"),
                          QStringLiteral("SwitchChanged cellular true")}));
    QCOMPARE(QFile::exists(CameraMarker), effect);
}

QTEST_GUILESS_MAIN(TestSwitchValueKinds)
#include "tst_switchvaluekinds.moc"
