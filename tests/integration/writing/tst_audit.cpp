// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/facts.h"
#include "support/files.h"
#include "support/texts.h"
#include "support/waiting.h"
#include "support/watcheddaemon.h"

#include "simulator/servicethread.h"
#include "simulator/systemlogs.h"

#include <QSemaphore>
#include <QtTest>

#include <syslog.h>

using Simulator::Fault;
using namespace Support;

namespace {

const QString Send = QStringLiteral("sendEventStringAlt");

} // namespace

/// The record of changes of policies: in the system log and with the system-log service.
class TestAudit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void changeIsRecordedInBothPlaces();
    void eventGoesToTheRightObject();
    void firstValueHasNoOldText();
    void eventTellsTheWholeHistory();
    void textIsFilledInOneAfterTheOther_data();
    void textIsFilledInOneAfterTheOther();
    void eventNeedsNoService();
    void serviceThatComesLaterGetsLaterEvents();
    void serviceInTroubleChangesNothing_data();
    void serviceInTroubleChangesNothing();
    void writesDoNotWaitForTheService();
    void startRecordsNoPolicies_data();
    void startRecordsNoPolicies();
};

void TestAudit::changeIsRecordedInBothPlaces()
{
    Simulator::SystemLogs logs;
    QVERIFY(logs.appear());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(daemon.set(Camera, false), QVariant(true));

    daemon.monitor().settle();
    daemon.systemLog().settle();
    const QString text = QStringLiteral("Policy CameraEnabled changed."
                                        " Old value true. New value false.");
    const auto lines = daemon.systemLog().lines();
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines.first().text, text);
    QCOMPARE(lines.first().priority, LOG_USER | LOG_INFO);
    QCOMPARE(lines.first().program, QStringLiteral("govd"));
    QCOMPARE(logs.events().size(), 1);
    QCOMPARE(logs.events().first().kind, QStringLiteral("security-policy-changed"));
    QCOMPARE(logs.events().first().level, QStringLiteral("INFO_LEVEL"));
    QCOMPARE(logs.events().first().text, text);
}

void TestAudit::eventGoesToTheRightObject()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    daemon.monitor().settle();
    const auto calls = daemon.monitor().calls(Send);
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().destination, QStringLiteral("org.kvtlabs.SystemLogs"));
    QCOMPARE(calls.first().path, QStringLiteral("/org/kvtlabs/SystemLogs"));
    QCOMPARE(calls.first().interface, QStringLiteral("org.kvtlabs.SystemLogs"));
    QCOMPARE(calls.first().signature, QStringLiteral("sss"));
}

void TestAudit::firstValueHasNoOldText()
{
    const QString key = QStringLiteral("com.example.Wish");
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(key, false), QVariant(true));
    QCOMPARE(daemon.recorded(),
             QStringList(
                 QStringLiteral("Policy com.example.Wish changed. Old value . New value false.")));
    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(key, QString(), No), daemon.announcement(key, false), ReplyTrue}));
}

void TestAudit::eventTellsTheWholeHistory()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const QVariantList values{false, 5, QStringLiteral("five"), QStringLiteral(""), -1, true};
    for (const QVariant &value : values)
        QCOMPARE(daemon.set(Camera, value), QVariant(true));
    const auto text = [](const char *oldText, const char *newText) {
        return WatchedDaemon::eventText(Camera, QLatin1String(oldText), QLatin1String(newText));
    };
    QCOMPARE(daemon.recorded(),
             QStringList({text("true", "false"), text("false", "5"), text("5", "five"),
                          text("five", ""), text("", "-1"), text("-1", "true")}));
}

void TestAudit::textIsFilledInOneAfterTheOther_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("oldValue"); // empty: none
    QTest::addColumn<QString>("newValue");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *key, const char *oldValue,
                        const char *newValue, const char *text) {
        QTest::newRow(name) << QString::fromUtf8(key) << QString::fromUtf8(oldValue)
                            << QString::fromUtf8(newValue) << QString::fromUtf8(text);
    };
    row("percent sign", "100%", "50%", "5%", "Policy 100% changed. Old value 50%. New value 5%.");
    row("letters of C formats", "%s%n", "%d", "%x",
        "Policy %s%n changed. Old value %d. New value %x.");
    row("two percent signs", "%%1%%", "", "x", "Policy %%% changed. Old value x. New value %3.");
    row("beyond ASCII", "K\u00fche", "\u03b1", "\xf0\x9f\x90\x84",
        "Policy K\u00fche changed. Old value \u03b1. New value \xf0\x9f\x90\x84.");
    // Each step fills the lowest number that is left, also one that came with a text before.
    row("first place in the key", "a%1", "b", "c", "Policy ab changed. Old value c. New value %3.");
    row("second place in the key", "a%2", "b", "c", "Policy ab changed. Old value b. New value c.");
    row("third place in the key", "a%3", "b", "c", "Policy ac changed. Old value b. New value c.");
    row("high place in the key", "a%9", "b", "c", "Policy a%9 changed. Old value b. New value c.");
    row("third place in the old value", "a", "b%3", "c",
        "Policy a changed. Old value bc. New value c.");
    row("first place in the old value", "a", "b%1", "c",
        "Policy a changed. Old value bc. New value %3.");
    row("places in the new value", "a", "b", "%1%2%3",
        "Policy a changed. Old value b. New value %1%2%3.");
    row("line break in a value", "a", "b\nc", "d\te",
        "Policy a changed. Old value b\nc. New value d\te.");
}

void TestAudit::textIsFilledInOneAfterTheOther()
{
    QFETCH(QString, key);
    QFETCH(QString, oldValue);
    QFETCH(QString, newValue);
    QFETCH(QString, text);
    Simulator::SystemLogs logs;
    QVERIFY(logs.appear());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    if (!oldValue.isEmpty())
        QCOMPARE(daemon.set(key, oldValue), QVariant(true));
    daemon.forget();

    QCOMPARE(daemon.set(key, newValue), QVariant(true));

    QCOMPARE(daemon.recorded(), QStringList(text));
    QTRY_COMPARE(logs.events().isEmpty() ? QString() : logs.events().last().text, text);
}

void TestAudit::eventNeedsNoService()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    QCOMPARE(daemon.recorded(), QStringList(daemon.eventText(Camera, Yes, No)));
    QCOMPARE(daemon.said(),
             QStringList(
                 {daemon.event(Camera, Yes, No), daemon.announcement(Camera, false), ReplyTrue}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestAudit::serviceThatComesLaterGetsLaterEvents()
{
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(daemon.set(Camera, false), QVariant(true));
    daemon.forget();
    Simulator::SystemLogs logs;
    QVERIFY(logs.appear());
    QCOMPARE(daemon.said(), QStringList()); // nothing is sent again

    QCOMPARE(daemon.set(Camera, true), QVariant(true));

    QCOMPARE(
        daemon.said(),
        QStringList({daemon.event(Camera, No, Yes), daemon.announcement(Camera, true), ReplyTrue}));
    QCOMPARE(logs.events().size(), 1);
    QCOMPARE(logs.events().first().text, daemon.eventText(Camera, No, Yes));
}

void TestAudit::serviceInTroubleChangesNothing_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("error") << int(Fault::Error);
    QTest::newRow("wrong answer") << int(Fault::WrongAnswer);
    QTest::newRow("silence") << int(Fault::Silence);
    QTest::newRow("death") << int(Fault::Death);
}

void TestAudit::serviceInTroubleChangesNothing()
{
    QFETCH(int, kind);
    Fault fault = Fault::wrongAnswer({QStringLiteral("thanks"), 7});
    fault.kind = static_cast<Fault::Kind>(kind);
    if (fault.kind == Fault::Error)
        fault = Fault::error();
    Simulator::SystemLogs logs;
    QVERIFY(logs.appear());
    logs.setFault(fault);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    for (const bool value : {false, true})
        QCOMPARE(daemon.set(Camera, value), QVariant(true));

    QCOMPARE(
        daemon.said(),
        QStringList({daemon.event(Camera, Yes, No), daemon.announcement(Camera, false), ReplyTrue,
                     daemon.event(Camera, No, Yes), daemon.announcement(Camera, true), ReplyTrue}));
    QCOMPARE(daemon.recorded(),
             QStringList({daemon.eventText(Camera, Yes, No), daemon.eventText(Camera, No, Yes)}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestAudit::writesDoNotWaitForTheService()
{
    Simulator::ServiceThread thread;
    auto *logs = thread.create<Simulator::SystemLogs>();
    QVERIFY(thread.run([logs] { return logs->appear(); }));
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QSemaphore gate; // the service does nothing at all until the writes are through
    const QSemaphoreReleaser opener(gate); // also when a check fails
    QMetaObject::invokeMethod(logs, [&gate] { gate.acquire(); });

    QStringList said;
    QStringList texts;
    for (int i = 1; i <= 10; ++i) {
        QCOMPARE(daemon.set(QStringLiteral("Count"), i), QVariant(true));
        const QString before = i == 1 ? QString() : QString::number(i - 1);
        texts.append(daemon.eventText(QStringLiteral("Count"), before, QString::number(i)));
        said += {daemon.event(QStringLiteral("Count"), before, QString::number(i)),
                 daemon.announcement(QStringLiteral("Count"), true), ReplyTrue};
    }
    QCOMPARE(daemon.said(), said);
    const auto calls = daemon.monitor().calls(Send);
    const auto answersAnEvent = [&](const BusMessage &message) {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const BusMessage &call) { return message.answers(call); });
    };
    QCOMPARE(daemon.monitor().messages(answersAnEvent).size(), 0);

    gate.release();
    QVERIFY(waitFor([&] { return daemon.monitor().messages(answersAnEvent).size() == 10; }));
    QStringList received;
    for (const auto &event : thread.run([logs] { return logs->events(); }))
        received.append(event.text);
    QCOMPARE(received, texts);
    QCOMPARE(daemon.recorded(), texts);
    QCOMPARE(daemon.logged(), QStringList());
}

void TestAudit::startRecordsNoPolicies_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("defaults") << QString();
    QTest::newRow("file") << PolicyFile;
    QTest::newRow("directory") << QStringLiteral("/etc/policy/policy.d/seed.conf");
}

void TestAudit::startRecordsNoPolicies()
{
    QFETCH(QString, file);
    if (!file.isEmpty())
        Files::write(file, "[policy]\nCameraEnabled=false\nBrowserEnabled=true\n");
    WatchedDaemon daemon;
    QVERIFY(daemon.process().start());
    QCOMPARE(daemon.recorded(), QStringList());
    QCOMPARE(daemon.monitor().calls(Send).size(), 0);
    QCOMPARE(daemon.policy(Camera), QVariant(file.isEmpty()));
}

QTEST_GUILESS_MAIN(TestAudit)
#include "tst_audit.moc"
