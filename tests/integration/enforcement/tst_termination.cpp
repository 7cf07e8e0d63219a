// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/runtimemanager.h"
#include "support/caller.h"
#include "support/files.h"
#include "support/neighbour.h"
#include "support/watcheddaemon.h"
#include "support/wording.h"

#include <QTest>

using Simulator::Fault;
using namespace Support;

namespace {

const QString Browser = QStringLiteral("BrowserEnabled");
const QString Messages = QStringLiteral("MessagesEnabled");
const QString RuntimeManager = QStringLiteral("org.kvt.RuntimeManager");

const QString BrowserApplication = QStringLiteral("org.kvt.browserstandalone");
const QString WebApplication = QStringLiteral("org.kvt.browserpwa");
const QString MessagesApplication = QStringLiteral("org.kvt.messages");

QString terminate(const QString &application)
{
    return Wording::call(QStringLiteral("org.kvt.RuntimeManager /org/kvt/RuntimeManager/Control1"
                                        " org.kvt.RuntimeManager.Control1"),
                         QStringLiteral("Terminate"), QStringLiteral("s"), {application});
}

QString notice(const QString &application, const QString &error)
{
    return QStringLiteral("info|default|Terminating \"%1\" \"%2\"").arg(application, error);
}

} // namespace

class TestTermination : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void forbiddenBrowsersAreTerminatedInOrder();
    void forbiddenMessagesApplicationIsTerminated();
    void allowedApplicationsAreLeftAlone_data();
    void allowedApplicationsAreLeftAlone();
    void applicationsForbiddenSinceStartAreTerminatedTwice();
    void failureIsANoticeForEachApplication_data();
    void failureIsANoticeForEachApplication();
    void failureForTheFirstBrowserDoesNotStopTheSecond();
    void lateOrOddAnswerIsSuccess_data();
    void lateOrOddAnswerIsSuccess();
    void failureIsNoBusinessOfTheCaller();
    void failureIsNotRetriedWhenTheServiceAppears();
};

void TestTermination::forbiddenBrowsersAreTerminatedInOrder()
{
    Neighbour<Simulator::RuntimeManager> manager;
    manager.ask([](Simulator::RuntimeManager &service) {
        service.start(QStringLiteral("org.kvt.camera"));
        service.start(WebApplication);
        service.start(BrowserApplication);
    });
    manager.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QCOMPARE(daemon.calls(RuntimeManager), QStringList());
    daemon.forget();

    QVERIFY(daemon.change(Browser, false));

    QCOMPARE(daemon.calls(RuntimeManager),
             QStringList({terminate(BrowserApplication), terminate(WebApplication)}));
    QCOMPARE(daemon.logged(), QStringList());
    const QStringList running = manager.ask(
        [](Simulator::RuntimeManager &service) { return service.runningApplications(); });
    QCOMPARE(running, QStringList(QStringLiteral("org.kvt.camera")));
}

void TestTermination::forbiddenMessagesApplicationIsTerminated()
{
    Neighbour<Simulator::RuntimeManager> manager;
    manager.ask([](Simulator::RuntimeManager &service) { service.start(MessagesApplication); });
    manager.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(Messages, false));

    QCOMPARE(daemon.calls(RuntimeManager), QStringList(terminate(MessagesApplication)));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestTermination::allowedApplicationsAreLeftAlone_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("browsers") << Browser;
    QTest::newRow("messages") << Messages;
}

void TestTermination::allowedApplicationsAreLeftAlone()
{
    QFETCH(QString, key);
    Neighbour<Simulator::RuntimeManager> manager;
    manager.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(daemon.hasLeftAlone(RuntimeManager));
    QVERIFY(daemon.change(key, false));
    daemon.forget();

    QVERIFY(daemon.change(key, true));

    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
    QVERIFY(daemon.hasLeftAlone(RuntimeManager));
}

/// Once when the stored value is read and once when all policies are set up.
void TestTermination::applicationsForbiddenSinceStartAreTerminatedTwice()
{
    Neighbour<Simulator::RuntimeManager> manager;
    manager.appear();
    WatchedDaemon daemon;
    Files::write(QStringLiteral("/etc/policy/policy.conf"), "[policy]\nMessagesEnabled=false\n");
    QVERIFY(daemon.startObserved());

    QCOMPARE(daemon.calls(RuntimeManager),
             QStringList({terminate(MessagesApplication), terminate(MessagesApplication)}));
}

void TestTermination::failureIsANoticeForEachApplication_data()
{
    const QString absent =
        QStringLiteral("The name org.kvt.RuntimeManager was not provided by any .service files");
    const QString dead =
        QStringLiteral("Message recipient disconnected from message bus without replying");

    QTest::addColumn<bool>("present");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("applications");
    QTest::addColumn<QStringList>("errors");

    const QStringList browsers{BrowserApplication, WebApplication};
    const QStringList messages{MessagesApplication};
    const QString failed = QStringLiteral("Failed on purpose");
    QTest::newRow("absent, browsers")
        << false << int(Fault::None) << Browser << browsers << QStringList{absent, absent};
    QTest::newRow("absent, messages")
        << false << int(Fault::None) << Messages << messages << QStringList{absent};
    QTest::newRow("error, browsers")
        << true << int(Fault::Error) << Browser << browsers << QStringList{failed, failed};
    QTest::newRow("error, messages")
        << true << int(Fault::Error) << Messages << messages << QStringList{failed};
    QTest::newRow("death, browsers")
        << true << int(Fault::Death) << Browser << browsers << QStringList{dead, absent};
    QTest::newRow("death, messages")
        << true << int(Fault::Death) << Messages << messages << QStringList{dead};
}

void TestTermination::failureIsANoticeForEachApplication()
{
    QFETCH(bool, present);
    QFETCH(int, kind);
    QFETCH(QString, key);
    QFETCH(QStringList, applications);
    QFETCH(QStringList, errors);

    Neighbour<Simulator::RuntimeManager> manager;
    manager.fail(kind == Fault::Death ? Fault::death() : Fault::error());
    if (present)
        manager.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(key, false));

    QStringList calls;
    QStringList notices;
    for (int i = 0; i < applications.size(); ++i) {
        calls.append(terminate(applications.at(i)));
        notices.append(notice(applications.at(i), errors.at(i)));
    }
    QCOMPARE(daemon.calls(RuntimeManager), calls);
    QCOMPARE(daemon.logged(), notices);
}

void TestTermination::failureForTheFirstBrowserDoesNotStopTheSecond()
{
    Neighbour<Simulator::RuntimeManager> manager;
    manager.ask([](Simulator::RuntimeManager &service) { service.start(WebApplication); });
    manager.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(Browser, false));

    const QStringList running = manager.ask(
        [](Simulator::RuntimeManager &service) { return service.runningApplications(); });
    QCOMPARE(running, QStringList());
    QCOMPARE(daemon.logged().size(), 1);
    QVERIFY(daemon.logged().at(0).startsWith(
        QStringLiteral("info|default|Terminating \"org.kvt.browserstandalone\" \"")));
}

void TestTermination::lateOrOddAnswerIsSuccess_data()
{
    QTest::addColumn<int>("delay");
    QTest::addColumn<QVariantList>("answer");
    QTest::newRow("late") << 300 << QVariantList();
    QTest::newRow("a number") << 0 << QVariantList{7};
    QTest::newRow("false") << 0 << QVariantList{false};
}

void TestTermination::lateOrOddAnswerIsSuccess()
{
    QFETCH(int, delay);
    QFETCH(QVariantList, answer);
    Neighbour<Simulator::RuntimeManager> manager;
    manager.ask([](Simulator::RuntimeManager &service) { service.start(MessagesApplication); });
    manager.fail(delay > 0 ? Fault::late(delay) : Fault::wrongAnswer(answer));
    manager.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(Messages, false));

    QCOMPARE(daemon.calls(RuntimeManager), QStringList(terminate(MessagesApplication)));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestTermination::failureIsNoBusinessOfTheCaller()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    const Reply reply = Caller().setPolicy(Browser, false);

    QCOMPARE(reply.errorName, QString());
    QCOMPARE(reply.signature, QStringLiteral("b"));
    QCOMPARE(reply.value(), QVariant(true));
    QCOMPARE(Caller().policy(Browser).value(), QVariant(false));
    QCOMPARE(Files::values(QStringLiteral("/etc/policy/policy.conf")).value(Browser),
             QStringLiteral("false"));
    QCOMPARE(daemon.announcements(), QStringList(daemon.announcement(Browser, false)));
}

void TestTermination::failureIsNotRetriedWhenTheServiceAppears()
{
    Neighbour<Simulator::RuntimeManager> manager;
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(Messages, false));
    daemon.forget();

    manager.appear();

    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

QTEST_GUILESS_MAIN(TestTermination)
#include "tst_termination.moc"
