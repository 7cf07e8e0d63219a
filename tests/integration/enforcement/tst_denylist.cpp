// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "support/files.h"
#include "support/neighbour.h"
#include "support/watcheddaemon.h"
#include "support/wording.h"

#include <QTest>

using namespace Support;

namespace {

const QString SandboxName = QStringLiteral("org.pelloraos.appjaild1");

struct Row
{
    const char *name;
    const char *key;
    QStringList applications;
};

/// The policies that the sandbox is told about, in the order of their numbers.
const QVector<Row> rows{
    {"1",
     "CameraEnabled",
     {QStringLiteral("org.kvt.cameralockscreen"), QStringLiteral("org.kvt.camera")}},
    {"20", "MicrophoneEnabled", {}},
    {"29",
     "BrowserEnabled",
     {QStringLiteral("org.kvt.browserstandalone"), QStringLiteral("org.kvt.browserpwa")}},
    {"35", "VoiceCallsEnabled", {QStringLiteral("voicecall-ui")}},
    {"36", "MessagesEnabled", {QStringLiteral("org.kvt.messages")}},
    {"41", "UserReportExportEnabled", {}},
};

QString changeDenylist(bool isAllowed, const QStringList &applications)
{
    return Wording::call(
        QStringLiteral("org.pelloraos.appjaild1 /org/pelloraos/appjaild1 org.pelloraos.appjaild1"),
        isAllowed ? QStringLiteral("RemoveFromGlobalDenylist")
                  : QStringLiteral("AddToGlobalDenylist"),
        QStringLiteral("as"), {applications});
}

QString failure(bool isAllowed, const QStringList &applications)
{
    QStringList quoted;
    for (const QString &application : applications)
        quoted.append(QLatin1Char('"') + application + QLatin1Char('"'));
    return (isAllowed
                ? QStringLiteral(
                    "warning|default|Failed to remove packages from global denylist: (%1)")
                : QStringLiteral("warning|default|Failed to add packages to global denylist: (%1)"))
        .arg(quoted.join(QLatin1String(", ")));
}

void addPolicyRows()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("applications");
    QTest::addColumn<bool>("value");
    for (const Row &row : rows) {
        for (const bool value : {false, true})
            QTest::newRow(QByteArray(row.name) + (value ? ", allowed" : ", forbidden"))
                << QString::fromLatin1(row.key) << row.applications << value;
    }
}

/// Brings the policy to the other value, so that the change to @p value is one.
bool prepare(WatchedDaemon &daemon, const QString &key, bool value)
{
    const bool done = daemon.change(key, !value);
    daemon.forget();
    return done;
}

} // namespace

class TestDenylist : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void denylistFollowsThePolicy_data();
    void denylistFollowsThePolicy();
    void otherPoliciesDoNotReachTheSandbox_data();
    void otherPoliciesDoNotReachTheSandbox();
    void stateOfTheSandboxFollows();
    void failureListsThePackages_data();
    void failureListsThePackages();
    void failureForEveryKindOfTroubleIsTheSame_data();
    void failureForEveryKindOfTroubleIsTheSame();
    void oddAnswerIsSuccess_data();
    void oddAnswerIsSuccess();
    void allPoliciesAreToldAtStart();
    void allPoliciesAreToldWhenTheSandboxAppears();
};

void TestDenylist::denylistFollowsThePolicy_data()
{
    addPolicyRows();
}

void TestDenylist::denylistFollowsThePolicy()
{
    QFETCH(QString, key);
    QFETCH(QStringList, applications);
    QFETCH(bool, value);
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(prepare(daemon, key, value));

    QVERIFY(daemon.change(key, value));

    QCOMPARE(daemon.calls(SandboxName), QStringList(changeDenylist(value, applications)));
}

void TestDenylist::otherPoliciesDoNotReachTheSandbox_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("in no table") << QStringLiteral("LocationEnabled");
    QTest::newRow("of another service") << QStringLiteral("UsbMediaTransferEnabled");
    QTest::newRow("of the direct route") << QStringLiteral("DeveloperShellEnabled");
    QTest::newRow("of nobody") << QStringLiteral("NoSuchPolicy");
}

void TestDenylist::otherPoliciesDoNotReachTheSandbox()
{
    QFETCH(QString, key);
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(key, false));
    QVERIFY(daemon.change(key, true));

    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.logged(), QStringList());
}

void TestDenylist::stateOfTheSandboxFollows()
{
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const auto denylist = [](Simulator::ApplicationSandbox &service) {
        return service.denylist();
    };

    QVERIFY(daemon.change(QStringLiteral("CameraEnabled"), false));
    QVERIFY(daemon.change(QStringLiteral("VoiceCallsEnabled"), false));
    QVERIFY(daemon.change(QStringLiteral("MicrophoneEnabled"), false));
    QCOMPARE(
        sandbox.ask(denylist),
        QStringList({QStringLiteral("org.kvt.camera"), QStringLiteral("org.kvt.cameralockscreen"),
                     QStringLiteral("voicecall-ui")}));

    QVERIFY(daemon.change(QStringLiteral("CameraEnabled"), true));
    QCOMPARE(sandbox.ask(denylist), QStringList(QStringLiteral("voicecall-ui")));
}

void TestDenylist::failureListsThePackages_data()
{
    addPolicyRows();
}

void TestDenylist::failureListsThePackages()
{
    QFETCH(QString, key);
    QFETCH(QStringList, applications);
    QFETCH(bool, value);
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QVERIFY(prepare(daemon, key, value));
    sandbox.fail(Simulator::Fault::error());

    QVERIFY(daemon.change(key, value));

    QCOMPARE(daemon.calls(SandboxName), QStringList(changeDenylist(value, applications)));
    const QStringList warnings = daemon.logged().filter(QStringLiteral("warning|"));
    QCOMPARE(warnings, QStringList(failure(value, applications)));
}

void TestDenylist::failureForEveryKindOfTroubleIsTheSame_data()
{
    Trouble::addRows(SandboxName);
}

void TestDenylist::failureForEveryKindOfTroubleIsTheSame()
{
    QFETCH(Trouble, trouble);
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    sandbox.suffer(trouble);

    QVERIFY(daemon.change(QStringLiteral("CameraEnabled"), false));

    QCOMPARE(daemon.logged(),
             QStringList(QStringLiteral("warning|default|Failed to add packages to global denylist:"
                                        " (\"org.kvt.cameralockscreen\", \"org.kvt.camera\")")));
}

void TestDenylist::oddAnswerIsSuccess_data()
{
    Oddity::addRows();
}

void TestDenylist::oddAnswerIsSuccess()
{
    QFETCH(Oddity, oddity);
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    sandbox.fail(oddity.fault);

    QVERIFY(daemon.change(QStringLiteral("VoiceCallsEnabled"), false));

    QCOMPARE(daemon.calls(), QStringList(changeDenylist(false, {QStringLiteral("voicecall-ui")})));
    QCOMPARE(daemon.logged(), QStringList());
}

/// Each policy is told once as its value is stored, and once when all are set up.
void TestDenylist::allPoliciesAreToldAtStart()
{
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());

    QStringList once;
    for (const Row &row : rows) // user reports are forbidden without device information
        once.append(changeDenylist(qstrcmp(row.name, "41") != 0, row.applications));
    QCOMPARE(daemon.calls(SandboxName), once + once);
}

void TestDenylist::allPoliciesAreToldWhenTheSandboxAppears()
{
    Neighbour<Simulator::ApplicationSandbox> sandbox;
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QCOMPARE(daemon.calls(SandboxName), QStringList());

    sandbox.appear();

    QStringList once;
    for (const Row &row : rows)
        once.append(changeDenylist(qstrcmp(row.name, "41") != 0, row.applications));
    QCOMPARE(daemon.calls(SandboxName), once + once);
}

QTEST_GUILESS_MAIN(TestDenylist)
#include "tst_denylist.moc"
