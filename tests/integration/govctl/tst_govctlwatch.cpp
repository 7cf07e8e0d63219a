// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/fakedaemon.h"
#include "govctl/govctl.h"
#include "support/bus.h"
#include "support/caller.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/switchplugin.h"

#include <QDBusConnectionInterface>
#include <QDBusVariant>
#include <QDateTime>
#include <QtTest>

using namespace Support;

namespace {

const QString Watching = QStringLiteral("watching org.kvt.PolicyManager\n");

/// The forged announcement that @p key is on.
QDBusMessage forged(const QString &destination, const QString &key)
{
    const QString path = QStringLiteral("/org/kvt/PolicyManager");
    const QString interface = QStringLiteral("org.kvt.PolicyManager.Policy");
    const QString name = QStringLiteral("PolicyChanged");
    QDBusMessage message = destination.isEmpty()
        ? QDBusMessage::createSignal(path, interface, name)
        : QDBusMessage::createTargetedSignal(destination, path, interface, name);
    message << key << QVariant::fromValue(QDBusVariant(true));
    return message;
}

/// The connection of the process @p process on the bus.
QString connectionOf(const QDBusConnection &bus, qint64 process)
{
    const QStringList names = bus.interface()->registeredServiceNames();
    for (const QString &name : names) {
        if (name.startsWith(QLatin1Char(':')) && bus.interface()->servicePid(name) == process)
            return name;
    }
    return {};
}

QJsonObject resultOf(const QString &line)
{
    return validDocument(line.toUtf8()).value(QStringLiteral("result")).toObject();
}

} // namespace

/// The verb "watch", against the real daemon and those who pretend to be it.
class TestGovctlWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void showsPolicies();
    void showsSwitchesAndWhatTheyForce();
    void showsLocks();
    void onceEndsAfterTheFirst();
    void isJsonLines();
    void followsTheDaemonAcrossARestart();
    void hearsTheFirstWordOfANewDaemon();
    void heedsNobodyElse();
    void endsWhenTheReaderHasGone();
    void endsWhenTheBusIsGone();
};

void TestGovctlWatch::init()
{
    Files::reset();
}

void TestGovctlWatch::showsPolicies()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl(Identity::of("guest"));
    govctl.start({QStringLiteral("watch")});
    QVERIFY(govctl.waitForErr(Watching));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    QVERIFY(govctl.waitForOut(QStringLiteral("policy   CameraEnabled  off\n")));
    QVERIFY(!Caller().setPolicy(Camera, true).isError());
    QVERIFY(govctl.waitForOut(QStringLiteral("policy   CameraEnabled  on\n")));
    govctl.interrupt();
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.code, -1);
    QCOMPARE(outcome.lines().size(), 2);
}

void TestGovctlWatch::showsSwitchesAndWhatTheyForce()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("spy"), {1}, true);
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch")});
    QVERIFY(govctl.waitForErr(Watching));
    QVERIFY(!Caller().setSwitch(QStringLiteral("spy"), false).isError());
    QVERIFY(govctl.waitForOut(QStringLiteral("policy   CameraEnabled  off\n")));
    QVERIFY(govctl.waitForOut(QStringLiteral("switch   spy  off\n")));
}

void TestGovctlWatch::showsLocks()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch")});
    QVERIFY(govctl.waitForErr(Watching));
    lock.setLocked({Camera});
    lock.announce(Camera, true);
    QVERIFY(govctl.waitForOut(QStringLiteral("policy   CameraEnabled  off\n")));
}

void TestGovctlWatch::onceEndsAfterTheFirst()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once")});
    QVERIFY(govctl.waitForErr(Watching));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.lines().size(), 1);
}

void TestGovctlWatch::isJsonLines()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("--json")});
    QVERIFY(govctl.waitForErr(Watching));
    const QDateTime before = QDateTime::currentDateTimeUtc();
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.lines().size(), 1);
    const QJsonObject first = resultOf(outcome.lines().first());
    QCOMPARE(first.value(QStringLiteral("kind")), QJsonValue(QStringLiteral("policy")));
    QCOMPARE(first.value(QStringLiteral("key")), QJsonValue(Camera));
    QCOMPARE(first.value(QStringLiteral("value")), QJsonValue(false));
    const QString time = first.value(QStringLiteral("time")).toString();
    QVERIFY(time.endsWith(QLatin1Char('Z')));
    QVERIFY(QDateTime::fromString(time, Qt::ISODateWithMs) >= before);
}

void TestGovctlWatch::followsTheDaemonAcrossARestart()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("--json")});
    QVERIFY(govctl.waitForErr(Watching));
    QCOMPARE(daemon.stop(), 0);
    QVERIFY(govctl.waitForOut(QStringLiteral("\"kind\":\"service\"")));
    QVERIFY(daemon.start());
    QVERIFY(govctl.waitForOut(QStringLiteral("\"value\":true")));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.lines().size(), 3);
    QCOMPARE(resultOf(outcome.lines()[0]).value(QStringLiteral("value")), QJsonValue(false));
    QCOMPARE(resultOf(outcome.lines()[1]).value(QStringLiteral("key")), QJsonValue(Service));
    QCOMPARE(resultOf(outcome.lines()[2]).value(QStringLiteral("key")), QJsonValue(Camera));
}

/// It may speak as soon as it has the name.
void TestGovctlWatch::hearsTheFirstWordOfANewDaemon()
{
    Bus bus;
    const QDBusConnection connection = bus.connect();
    Govctl govctl;
    {
        const FakeDaemon old(connection);
        govctl.start({QStringLiteral("watch"), QStringLiteral("--once")});
        QVERIFY(govctl.waitForErr(Watching));
    }
    FakeDaemon fresh(connection);
    fresh.announce(Camera);
    const QStringList lines = govctl.finish().lines();
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines[0].endsWith(QStringLiteral("service  org.kvt.PolicyManager  off")));
    QVERIFY(lines[1].endsWith(QStringLiteral("service  org.kvt.PolicyManager  on")));
    QVERIFY(lines[2].endsWith(QStringLiteral("policy   CameraEnabled  on")));
}

void TestGovctlWatch::heedsNobodyElse()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Bus bus;
    QDBusConnection stranger = bus.connect();
    Govctl govctl;
    govctl.start({QStringLiteral("watch"), QStringLiteral("--once")});
    QVERIFY(govctl.waitForErr(Watching));
    const QString target = connectionOf(stranger, govctl.processId());
    QVERIFY(!target.isEmpty());

    QVERIFY(stranger.send(forged({}, QStringLiteral("VpnEnabled"))));
    QVERIFY(stranger.send(forged(target, QStringLiteral("NfcEnabled"))));
    // The bus has passed the forgeries on before it passes on what comes next.
    QVERIFY(stranger.interface()->isServiceRegistered(Service));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.lines().size(), 1);
    QVERIFY(outcome.out.contains(QStringLiteral("CameraEnabled")));
}

void TestGovctlWatch::endsWhenTheReaderHasGone()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    govctl.startShell(PipeWithoutReader + QStringLiteral("exec govctl watch >&3"));
    QVERIFY(govctl.waitForErr(Watching));
    QVERIFY(!Caller().setPolicy(Camera, false).isError());
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.err, QStringLiteral("govctl: ") + Watching);
}

void TestGovctlWatch::endsWhenTheBusIsGone()
{
    Bus bus;
    FakeDaemon fake(bus.connect());
    Govctl govctl;
    govctl.start({QStringLiteral("watch")});
    QVERIFY(govctl.waitForErr(Watching));
    bus.stop();
    const Outcome outcome = govctl.finish();
    QCOMPARE(outcome.code, 5);
    QVERIFY(outcome.err.contains(QStringLiteral("cannot reach the system bus")));
}

QTEST_GUILESS_MAIN(TestGovctlWatch)
#include "tst_govctlwatch.moc"
