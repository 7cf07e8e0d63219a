// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "support/enforcement.h"
#include "support/neighbour.h"

#include <QTest>

using Support::Enforcement;
using Support::Oddity;
using Support::Trouble;

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
    return Enforcement::callText(
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
bool prepare(Enforcement &device, const QString &key, bool value)
{
    const bool done = device.change(key, !value);
    device.forget();
    return done;
}

} // namespace

class TestDenylist : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(prepare(device, key, value));

    QVERIFY(device.change(key, value));

    QCOMPARE(device.calls(SandboxName), QStringList(changeDenylist(value, applications)));
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
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();

    QVERIFY(device.change(key, false));
    QVERIFY(device.change(key, true));

    QCOMPARE(device.calls(), QStringList());
    QCOMPARE(device.log(), QStringList());
}

void TestDenylist::stateOfTheSandboxFollows()
{
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    QVERIFY(device.start());
    const auto denylist = [](Simulator::ApplicationSandbox &service) {
        return service.denylist();
    };

    QVERIFY(device.change(QStringLiteral("CameraEnabled"), false));
    QVERIFY(device.change(QStringLiteral("VoiceCallsEnabled"), false));
    QVERIFY(device.change(QStringLiteral("MicrophoneEnabled"), false));
    QCOMPARE(
        sandbox.ask(denylist),
        QStringList({QStringLiteral("org.kvt.camera"), QStringLiteral("org.kvt.cameralockscreen"),
                     QStringLiteral("voicecall-ui")}));

    QVERIFY(device.change(QStringLiteral("CameraEnabled"), true));
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
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    QVERIFY(device.start());
    QVERIFY(prepare(device, key, value));
    sandbox.fail(Simulator::Fault::error());

    QVERIFY(device.change(key, value));

    QCOMPARE(device.calls(SandboxName), QStringList(changeDenylist(value, applications)));
    const QStringList warnings = device.log().filter(QStringLiteral("warning|"));
    QCOMPARE(warnings, QStringList(failure(value, applications)));
}

void TestDenylist::failureForEveryKindOfTroubleIsTheSame_data()
{
    Trouble::addRows(SandboxName);
}

void TestDenylist::failureForEveryKindOfTroubleIsTheSame()
{
    QFETCH(Trouble, trouble);
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    sandbox.suffer(trouble);

    QVERIFY(device.change(QStringLiteral("CameraEnabled"), false));

    QCOMPARE(device.log(),
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
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    QVERIFY(device.start());
    device.forget();
    sandbox.fail(oddity.fault);

    QVERIFY(device.change(QStringLiteral("VoiceCallsEnabled"), false));

    QCOMPARE(device.calls(), QStringList(changeDenylist(false, {QStringLiteral("voicecall-ui")})));
    QCOMPARE(device.log(), QStringList());
}

/// Each policy is told once as its value is stored, and once when all are set up.
void TestDenylist::allPoliciesAreToldAtStart()
{
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    sandbox.appear();
    Enforcement device;
    QVERIFY(device.start());

    QStringList once;
    for (const Row &row : rows) // user reports are forbidden without device information
        once.append(changeDenylist(qstrcmp(row.name, "41") != 0, row.applications));
    QCOMPARE(device.calls(SandboxName), once + once);
}

void TestDenylist::allPoliciesAreToldWhenTheSandboxAppears()
{
    Support::Neighbour<Simulator::ApplicationSandbox> sandbox;
    Enforcement device;
    QVERIFY(device.start());
    QCOMPARE(device.calls(SandboxName), QStringList());

    sandbox.appear();

    QStringList once;
    for (const Row &row : rows)
        once.append(changeDenylist(qstrcmp(row.name, "41") != 0, row.applications));
    QCOMPARE(device.calls(SandboxName), once + once);
}

QTEST_GUILESS_MAIN(TestDenylist)
#include "tst_denylist.moc"
