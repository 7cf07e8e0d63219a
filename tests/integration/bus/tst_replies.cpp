// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busmonitor.h"
#include "support/caller.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/switchplugin.h"
#include "support/texts.h"

#include <QDBusVariant>
#include <QtTest>

using namespace Support;

namespace {

const QString ObjectPath = QStringLiteral("/org/kvt/PolicyManager");
const QString Lens = QStringLiteral("lens");

} // namespace

/// Replies and signals as they are on the wire.
class TestReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void repliesHaveTheTypesOfTheirMethods_data();
    void repliesHaveTheTypesOfTheirMethods();
    void callerWhoWantsNoReplyGetsNone();
    void changeOfAPolicyIsSignalled();
    void changeOfASwitchIsSignalled();
    void signalGoesBeforeTheReply();
    void writeThatChangesNothingIsNotSignalled();
    void everyChangeIsSignalledOnce();
    void valueReadsBackInItsOwnType_data();
    void valueReadsBackInItsOwnType();
    void keyWithoutAValueIsNotAnswered();
    void unansweredReaderHoldsUpNobody();
    void keyWithoutAValueGetsOne();
};

void TestReplies::init()
{
    Files::reset();
}

void TestReplies::repliesHaveTheTypesOfTheirMethods_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QVariant>("value");
    const QVariant off = QVariant::fromValue(QDBusVariant(false));
    const auto row = [](const char *interface, const char *method, const QVariantList &arguments,
                        const char *signature, const QVariant &value) {
        QTest::addRow("%s.%s", interface, method)
            << QString::fromLatin1(interface) << QString::fromLatin1(method) << arguments
            << QString::fromLatin1(signature) << value;
    };
    row("Policy", "KeyValue", {Camera}, "v", true);
    row("Policy", "SetKeyValue", {Camera, off}, "b", true);
    row("Switch", "KeyValue", {Lens}, "v", true);
    row("Switch", "SetKeyValue", {Lens, off}, "b", true); // said to be "i"
    row("Switch", "KeyPolicyTypes", {Lens}, "ai", QVariantList{1, 45});
    row("Switch", "Keys", {}, "as", QVariantList{Lens});
}

void TestReplies::repliesHaveTheTypesOfTheirMethods()
{
    QFETCH(const QString, interface);
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    QFETCH(const QString, signature);
    QFETCH(const QVariant, value);
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1, 45}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    const Reply reply = Caller().call(interface, method, arguments);
    QVERIFY(!reply.isError());
    QCOMPARE(reply.signature, signature);
    QCOMPARE(reply.arguments.size(), 1);
    QCOMPARE(reply.value(), value);

    // A refusal has the same type.
    if (method == QLatin1String("SetKeyValue") && interface == QLatin1String("Switch")) {
        const Reply refusal = Caller().setSwitch(QStringLiteral("gate"), true);
        QCOMPARE(refusal.signature, signature);
        QCOMPARE(refusal.value(), QVariant(false));
    }
}

void TestReplies::callerWhoWantsNoReplyGetsNone()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;
    Bus bus;
    QDBusConnection connection = bus.connect();
    QDBusMessage call = QDBusMessage::createMethodCall(
        Service, ObjectPath, Service + QStringLiteral(".Policy"), QStringLiteral("SetKeyValue"));
    call.setArguments({Camera, QVariant::fromValue(QDBusVariant(false))});
    QVERIFY(connection.send(call)); // sets the flag
    QVERIFY(monitor.waitFor([](const BusMessage &message) {
        return message.isSignal(QStringLiteral("PolicyChanged"));
    }));
    monitor.settle();
    const BusMessage seen = monitor.calls(QStringLiteral("SetKeyValue")).value(0);
    QCOMPARE(seen.sender, connection.baseService());
    QCOMPARE(
        monitor.messages([&](const BusMessage &message) { return message.answers(seen); }).size(),
        0);
    QCOMPARE(Client().policy(Camera), QVariant(false));
}

void TestReplies::changeOfAPolicyIsSignalled()
{
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Client().setPolicy(Camera, false));
    monitor.settle();
    const QVector<BusMessage> signalled = monitor.announcements(QStringLiteral("PolicyChanged"));
    QCOMPARE(signalled.size(), 1);
    QCOMPARE(signalled.first().sender, monitor.uniqueName(Service));
    QCOMPARE(signalled.first().destination, QString());
    QCOMPARE(signalled.first().path, ObjectPath);
    QCOMPARE(signalled.first().interface, Service + QStringLiteral(".Policy"));
    QCOMPARE(signalled.first().signature, QStringLiteral("sv"));
    QCOMPARE(signalled.first().arguments, QVariantList({Camera, false}));
}

void TestReplies::changeOfASwitchIsSignalled()
{
    SwitchPlugin plugin;
    plugin.setSwitch(Lens, {1, 20}, true);
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    plugin.announce(Lens, false);
    monitor.settle();

    const QString own = monitor.uniqueName(Service);
    const QVector<BusMessage> signalled = monitor.messages([&](const BusMessage &message) {
        return message.type == BusMessage::Signal && message.sender == own;
    });
    QCOMPARE(signalled.size(), 3);
    QCOMPARE(signalled.at(0).arguments, QVariantList({Camera, false}));
    QCOMPARE(signalled.at(1).arguments, QVariantList({QStringLiteral("MicrophoneEnabled"), false}));
    QCOMPARE(signalled.at(2).member, QStringLiteral("SwitchChanged"));
    QCOMPARE(signalled.at(2).destination, QString());
    QCOMPARE(signalled.at(2).path, ObjectPath);
    QCOMPARE(signalled.at(2).interface, Service + QStringLiteral(".Switch"));
    QCOMPARE(signalled.at(2).signature, QStringLiteral("sv"));
    QCOMPARE(signalled.at(2).arguments, QVariantList({Lens, false}));
}

void TestReplies::signalGoesBeforeTheReply()
{
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Client().setPolicy(Camera, false));
    monitor.settle();
    const BusMessage write = monitor.calls(QStringLiteral("SetKeyValue")).value(0);
    const QVector<BusMessage> ends = monitor.messages([&](const BusMessage &message) {
        return message.answers(write) || message.isSignal(QStringLiteral("PolicyChanged"));
    });
    QCOMPARE(ends.size(), 2);
    QCOMPARE(ends.at(0).type, BusMessage::Signal);
    QCOMPARE(ends.at(1).type, BusMessage::Return);
}

void TestReplies::writeThatChangesNothingIsNotSignalled()
{
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(Client().setPolicy(Camera, true));
    monitor.settle();
    QCOMPARE(monitor.announcements(QStringLiteral("PolicyChanged")).size(), 0);
}

void TestReplies::everyChangeIsSignalledOnce()
{
    BusMonitor monitor;
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    QVariantList expected;
    for (const bool value : {false, true, true, false}) {
        QVERIFY(client.setPolicy(Camera, value));
        expected.append(value);
    }
    expected.removeAt(2);
    monitor.settle();
    QVariantList signalled;
    const QVector<BusMessage> found = monitor.announcements(QStringLiteral("PolicyChanged"));
    for (const BusMessage &message : found)
        signalled.append(message.arguments.value(1));
    QCOMPARE(signalled, expected);
}

void TestReplies::valueReadsBackInItsOwnType_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("boolean") << QVariant(false);
    QTest::newRow("number") << QVariant(5);
    QTest::newRow("text") << QVariant(QStringLiteral("never"));
    QTest::newRow("fraction") << QVariant(0.5);
}

void TestReplies::valueReadsBackInItsOwnType()
{
    QFETCH(const QVariant, value);
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    const QString key = QStringLiteral("TelepathyEnabled");
    QVERIFY(client.setPolicy(key, value));
    const QVariant read = client.policy(key);
    QCOMPARE(read.userType(), value.userType());
    QCOMPARE(read, value);
}

void TestReplies::keyWithoutAValueIsNotAnswered()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    BusMonitor monitor;
    const int mark = daemon.mark();
    Caller caller;
    caller.setTimeout(300);
    const Reply reply = caller.policy(QStringLiteral("TelepathyEnabled"));
    QCOMPARE(reply.errorName, QStringLiteral("org.freedesktop.DBus.Error.NoReply"));

    monitor.settle();
    const BusMessage question = monitor.calls(QStringLiteral("KeyValue")).value(0);
    QCOMPARE(question.sender, caller.busName());
    QCOMPARE(monitor.messages([&](const BusMessage &message) { return message.answers(question); })
                 .size(),
             0);
    QCOMPARE(daemon.log(mark), QStringList());
}

void TestReplies::unansweredReaderHoldsUpNobody()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Caller waiting;
    waiting.send(QStringLiteral("Policy"), QStringLiteral("KeyValue"),
                 {QStringLiteral("TelepathyEnabled")});
    Client client;
    QCOMPARE(client.policy(Camera), QVariant(true));
    QVERIFY(client.setPolicy(Camera, false));
    QCOMPARE(client.policy(Camera), QVariant(false));
}

void TestReplies::keyWithoutAValueGetsOne()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Client client;
    const QString key = QStringLiteral("TelepathyEnabled");
    QVERIFY(client.haveNoValue({key}));
    QVERIFY(client.setPolicy(key, true));
    QCOMPARE(client.policy(key), QVariant(true));
    QVERIFY(client.haveNoValue({QStringLiteral("telepathyEnabled")}));
}

QTEST_GUILESS_MAIN(TestReplies)
#include "tst_replies.moc"
