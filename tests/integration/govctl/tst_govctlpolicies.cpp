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

/// The verbs that read and change policies, against the real daemon.
class TestGovctlPolicies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void listShowsEveryPolicy();
    void listCanLeaveOutWhatIsOn();
    void listedKeysNeedNoDaemon();
    void getPrintsTheValue();
    void getAnswersQuietly();
    void setTellsWhatChanged();
    void setTellsThatNothingChanged();
    void setTakesEveryWordForAValue_data();
    void setTakesEveryWordForAValue();
    void setIsRefusedByALock();
    void setIsRefusedWhenNothingCanBeSaved();
    void setIsNotForEverybody();
};

void TestGovctlPolicies::init()
{
    Files::reset();
}

void TestGovctlPolicies::listShowsEveryPolicy()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const QStringList keys = govctl.run(QStringLiteral("list --keys")).lines();
    QVERIFY(keys.contains(Camera));
    QVERIFY(!keys.contains(QStringLiteral("NoPolicy")));

    const Outcome list = govctl.run(QStringLiteral("list"));
    QCOMPARE(list.code, 0);
    QCOMPARE(list.err, QString());
    QStringList listed;
    for (const QString &line : list.lines())
        listed.append(line.section(QLatin1Char(' '), 0, 0));
    QCOMPARE(listed, keys);
    QVERIFY(!list.out.contains(QLatin1Char('\033')));

    const QJsonObject result = govctl.run(QStringLiteral("list --json")).result();
    QCOMPARE(result.value(QStringLiteral("policies")).toArray().size(), keys.size());
    const QJsonObject camera = policyIn(result, Camera);
    QCOMPARE(camera.value(QStringLiteral("value")), QJsonValue(true));
    QCOMPARE(camera.value(QStringLiteral("stored")), QJsonValue(true));
    QCOMPARE(camera.value(QStringLiteral("reason")), QJsonValue(QStringLiteral("stored")));
    QCOMPARE(camera.value(QStringLiteral("type")), QJsonValue(1));
}

void TestGovctlPolicies::listCanLeaveOutWhatIsOn()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\nUserReportExportEnabled=true\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome list = govctl.run(QStringLiteral("list --off"));
    QCOMPARE(list.lines().size(), 1);
    QVERIFY(
        QRegularExpression(QStringLiteral("^CameraEnabled +off\n$")).match(list.out).hasMatch());
    const QJsonObject result = govctl.run(QStringLiteral("list --off --json")).result();
    QCOMPARE(result.value(QStringLiteral("policies")).toArray().size(), 1);
}

void TestGovctlPolicies::listedKeysNeedNoDaemon()
{
    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("list --keys"));
    QCOMPARE(text.code, 0);
    const QJsonArray keys = govctl.run(QStringLiteral("list --keys --json"))
                                .result()
                                .value(QStringLiteral("keys"))
                                .toArray();
    QCOMPARE(text.lines(),
             keys.toVariantList().isEmpty() ? QStringList()
                                            : QVariant(keys.toVariantList()).toStringList());
}

void TestGovctlPolicies::getPrintsTheValue()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome off = govctl.run(QStringLiteral("get CameraEnabled"));
    QCOMPARE(off.out, QStringLiteral("off\n"));
    QCOMPARE(off.code, 0);
    QCOMPARE(govctl.run(QStringLiteral("get MicrophoneEnabled")).out, QStringLiteral("on\n"));
    const QJsonObject result = govctl.run(QStringLiteral("--json get CameraEnabled")).result();
    QCOMPARE(result.value(QStringLiteral("key")), QJsonValue(Camera));
    QCOMPARE(result.value(QStringLiteral("value")), QJsonValue(false));
}

void TestGovctlPolicies::getAnswersQuietly()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome off = govctl.run(QStringLiteral("get -q CameraEnabled"));
    QCOMPARE(off.code, 1);
    QCOMPARE(off.out + off.err, QString());
    const Outcome on = govctl.run(QStringLiteral("get MicrophoneEnabled --quiet"));
    QCOMPARE(on.code, 0);
    QCOMPARE(on.out + on.err, QString());
    const Outcome json = govctl.run(QStringLiteral("get -q --json CameraEnabled"));
    QCOMPARE(json.code, 1);
    QCOMPARE(json.result().value(QStringLiteral("value")), QJsonValue(false));
}

void TestGovctlPolicies::setTellsWhatChanged()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("set CameraEnabled off"));
    QCOMPARE(text.code, 0);
    QCOMPARE(text.lines().first(), QStringLiteral("CameraEnabled: on -> off"));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("false"));

    const QJsonObject result = govctl.run(QStringLiteral("set CameraEnabled on --json")).result();
    QCOMPARE(result.value(QStringLiteral("before")), QJsonValue(false));
    QCOMPARE(result.value(QStringLiteral("requested")), QJsonValue(true));
    QCOMPARE(result.value(QStringLiteral("changed")), QJsonValue(true));
    QCOMPARE(policy(result).value(QStringLiteral("value")), QJsonValue(true));
    QCOMPARE(policy(result).value(QStringLiteral("stored")), QJsonValue(true));
}

void TestGovctlPolicies::setTellsThatNothingChanged()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const Outcome text = govctl.run(QStringLiteral("set CameraEnabled on"));
    QCOMPARE(text.code, 0);
    QCOMPARE(
        text.out,
        QStringLiteral(
            "CameraEnabled is on already; it was saved and recorded again, and not enforced\n"));
    const QJsonObject result = govctl.run(QStringLiteral("set CameraEnabled on --json")).result();
    QCOMPARE(result.value(QStringLiteral("changed")), QJsonValue(false));
}

void TestGovctlPolicies::setTakesEveryWordForAValue_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("stored");
    for (const char *word : {"on", "true", "yes", "1", "ON"})
        QTest::newRow(word) << QString::fromLatin1(word) << QStringLiteral("true");
    for (const char *word : {"off", "false", "no", "0", "False"})
        QTest::newRow(word) << QString::fromLatin1(word) << QStringLiteral("false");
}

void TestGovctlPolicies::setTakesEveryWordForAValue()
{
    QFETCH(QString, word);
    QFETCH(QString, stored);
    const bool wanted = stored == QLatin1String("true");
    Files::write(PolicyFile,
                 wanted ? "[policy]\nCameraEnabled=false\n" : "[policy]\nCameraEnabled=true\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    QCOMPARE(govctl.run({QStringLiteral("set"), Camera, word}).code, 0);
    QCOMPARE(Files::values(PolicyFile).value(Camera), stored);
}

void TestGovctlPolicies::setIsRefusedByALock()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Daemon daemon;
    QVERIFY(daemon.start());
    lock.setLocked({Camera});
    Govctl govctl;
    const Outcome refused = govctl.run(QStringLiteral("set CameraEnabled off"));
    QCOMPARE(refused.code, 3);
    QCOMPARE(refused.out, QString());
    QVERIFY(refused.err.contains(QStringLiteral("it is locked;")));
    QCOMPARE(refused.err.count(QLatin1Char('\n')), 1);
    QCOMPARE(govctl.run(QStringLiteral("set CameraEnabled off --json")).error(),
             QStringLiteral("refused"));
    QCOMPARE(Files::values(PolicyFile).value(Camera), QStringLiteral("true"));
}

void TestGovctlPolicies::setIsRefusedWhenNothingCanBeSaved()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Files::write(PolicyFile, "this is no key file\n");
    Govctl govctl;
    const Outcome refused = govctl.run(QStringLiteral("set CameraEnabled off"));
    QCOMPARE(refused.code, 3);
    QVERIFY(refused.err.contains(QStringLiteral("it could not be saved;")));
    QCOMPARE(govctl.run(QStringLiteral("get CameraEnabled")).out, QStringLiteral("on\n"));
}

void TestGovctlPolicies::setIsNotForEverybody()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl guest(Identity::of("guest"));
    const Outcome refused = guest.run(QStringLiteral("set CameraEnabled off"));
    QCOMPARE(refused.code, 4);
    QCOMPARE(refused.out, QString());
    QVERIFY(refused.err.contains(QStringLiteral("govctl can")));
    QCOMPARE(guest.run(QStringLiteral("set CameraEnabled off --json")).error(),
             QStringLiteral("not-allowed"));
    QCOMPARE(guest.run(QStringLiteral("get CameraEnabled")).out, QStringLiteral("on\n"));

    Govctl agent(Identity::of("mdm"));
    QCOMPARE(agent.run(QStringLiteral("set CameraEnabled off")).code, 0);
    QCOMPARE(guest.run(QStringLiteral("get CameraEnabled")).out, QStringLiteral("off\n"));
}

QTEST_GUILESS_MAIN(TestGovctlPolicies)
#include "tst_govctlpolicies.moc"
