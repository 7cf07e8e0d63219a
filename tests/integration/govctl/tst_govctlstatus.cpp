// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/govctl.h"
#include "govctl/results.h"
#include "support/daemon.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"

#include <QJsonArray>
#include <QtTest>

using namespace Support;

/// The verbs about the whole system, against the real daemon.
class TestGovctlStatus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void statusIsContentWithAFreshDaemon();
    void statusListsDifferences();
    void statusComparesNothingItMayNotRead();
    void statusSeesAMalformedFile();
    void statusKnowsWhatItDoesNotKnow();
    void canTellsWhy_data();
    void canTellsWhy();
    void dumpHoldsEverything();
};

void TestGovctlStatus::init()
{
    Files::reset();
}

void TestGovctlStatus::statusIsContentWithAFreshDaemon()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("status"));
    QCOMPARE(text.code, 0);
    QVERIFY(text.out.contains(QStringLiteral("user root")));
    const QJsonObject result = govctl.run(QStringLiteral("status --json")).result();
    QCOMPARE(result.value(QStringLiteral("owner")).toObject().value(QStringLiteral("user")),
             QJsonValue(0));
    QCOMPARE(result.value(QStringLiteral("answers")), QJsonValue(true));
    QCOMPARE(result.value(QStringLiteral("file")), QJsonValue(QStringLiteral("read")));
    QCOMPARE(result.value(QStringLiteral("differences")).toArray().size(), 0);
}

void TestGovctlStatus::statusListsDifferences()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Daemon daemon;
    QVERIFY(daemon.start());
    lock.setLocked({Camera});
    QByteArray content = Files::read(PolicyFile);
    Files::write(PolicyFile, content.replace("VpnEnabled=true", "VpnEnabled=false"));

    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("status"));
    QCOMPARE(text.code, 1);
    QVERIFY(text.out.contains(QStringLiteral("  CameraEnabled: off, stored on: locked\n")));
    QVERIFY(text.out.contains(QStringLiteral("  VpnEnabled: on, stored off: ")));
    const QJsonArray differences = govctl.run(QStringLiteral("status --json"))
                                       .result()
                                       .value(QStringLiteral("differences"))
                                       .toArray();
    QCOMPARE(differences.size(), 2);
    QCOMPARE(differences[0].toObject().value(QStringLiteral("reason")),
             QJsonValue(QStringLiteral("lock")));
    QCOMPARE(differences[1].toObject().value(QStringLiteral("reason")),
             QJsonValue(QStringLiteral("file")));
}

void TestGovctlStatus::statusComparesNothingItMayNotRead()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::setPermissions(QStringLiteral("/etc/policy"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    Govctl guest(Identity::of("guest"));
    const Outcome text = guest.run(QStringLiteral("status"));
    QCOMPARE(text.code, 0);
    QVERIFY(text.out.contains(QStringLiteral("policy.conf, which this user may not read\n")));
    QCOMPARE(guest.run(QStringLiteral("status --json")).result().value(QStringLiteral("file")),
             QJsonValue(QStringLiteral("unreadable")));
}

void TestGovctlStatus::statusSeesAMalformedFile()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Files::write(PolicyFile, "this is no key file\n");
    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("status"));
    QCOMPARE(text.code, 1);
    QVERIFY(text.out.contains(
        QStringLiteral("policy.conf, which is malformed: nothing can be saved\n")));
    QCOMPARE(govctl.run(QStringLiteral("status --json")).result().value(QStringLiteral("file")),
             QJsonValue(QStringLiteral("malformed")));
    QVERIFY(QFile::remove(PolicyFile));
    const Outcome missing = govctl.run(QStringLiteral("status"));
    QCOMPARE(missing.code, 0);
    QVERIFY(missing.out.contains(QStringLiteral("policy.conf, which is missing\n")));
    QCOMPARE(govctl.run(QStringLiteral("status --json")).result().value(QStringLiteral("file")),
             QJsonValue(QStringLiteral("missing")));
}

void TestGovctlStatus::statusKnowsWhatItDoesNotKnow()
{
    Govctl govctl;
    QCOMPARE(govctl.run(QStringLiteral("status")).out, QStringLiteral("service   not there\n"));
    govctl.setEnvironment(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"),
                          QStringLiteral("unix:path=/nonexistent"));
    QCOMPARE(govctl.run(QStringLiteral("status")).out, QStringLiteral("service   not known\n"));
}

void TestGovctlStatus::canTellsWhy_data()
{
    QTest::addColumn<Identity>("identity");
    QTest::addColumn<QString>("right");
    QTest::newRow("root") << Identity::root() << "root";
    QTest::newRow("member") << Identity::of("mdm") << "member";
    QTest::newRow("primary member") << Identity::of("agent") << "member";
    QTest::newRow("privileged") << Identity::of("operator") << "group";
    QTest::newRow("not as the process's group") << Identity::of("deputy") << "none";
    QTest::newRow("capital letter") << Identity::of("pretender") << "none";
    QTest::newRow("guest") << Identity::of("guest") << "none";
}

/// The daemon has the last word: it must agree.
void TestGovctlStatus::canTellsWhy()
{
    QFETCH(Identity, identity);
    QFETCH(QString, right);
    const bool allowed = right != QLatin1String("none");
    Govctl govctl(identity);
    const Outcome text = govctl.run(QStringLiteral("can"));
    QCOMPARE(text.code, allowed ? 0 : 1);
    QVERIFY(text.out.startsWith(allowed ? QStringLiteral("yes: ") : QStringLiteral("no: ")));
    const QJsonObject result = govctl.run(QStringLiteral("can --json")).result();
    QCOMPARE(result.value(QStringLiteral("right")), QJsonValue(right));
    QCOMPARE(result.value(QStringLiteral("allowed")), QJsonValue(allowed));

    Daemon daemon;
    QVERIFY(daemon.start());
    QCOMPARE(govctl.run(QStringLiteral("set CameraEnabled off")).code, allowed ? 0 : 4);
}

void TestGovctlStatus::dumpHoldsEverything()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome people = govctl.run(QStringLiteral("dump"));
    QCOMPARE(people.code, 0);
    QVERIFY(people.lines().size() > 100);
    QVERIFY(!validDocument(people.out.toUtf8()).isEmpty());

    const QJsonObject result = govctl.run(QStringLiteral("dump --json")).result();
    QCOMPARE(policyIn(result, Camera).value(QStringLiteral("value")), QJsonValue(true));
    const QJsonObject file = result.value(QStringLiteral("files")).toArray()[0].toObject();
    QCOMPARE(file.value(QStringLiteral("path")), QJsonValue(PolicyFile));
    QCOMPARE(file.value(QStringLiteral("values")).toObject().value(Camera), QJsonValue(true));
    QCOMPARE(result.value(QStringLiteral("caller")).toObject().value(QStringLiteral("user")),
             QJsonValue(QStringLiteral("root")));
}

QTEST_GUILESS_MAIN(TestGovctlStatus)
#include "tst_govctlstatus.moc"
