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

/// What the client says of reasons, against the real daemon.
class TestGovctlExplain : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void explainTellsAStoredValueFromALock();
    void explainSaysWhatEnforcingDoes();
    void explainKnowsLessForOthers();
    void policyWithoutAValueIsNone();
};

void TestGovctlExplain::init()
{
    Files::reset();
}

void TestGovctlExplain::explainTellsAStoredValueFromALock()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    Files::write(PolicyFile, "[policy]\nMicrophoneEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    const auto reason = [&](const QString &key) {
        const Outcome outcome =
            govctl.run({QStringLiteral("explain"), key, QStringLiteral("--json")});
        return policy(outcome.result()).value(QStringLiteral("reason")).toString();
    };
    QCOMPARE(reason(Camera), QStringLiteral("stored"));
    QCOMPARE(reason(QStringLiteral("MicrophoneEnabled")), QStringLiteral("stored"));
    lock.setLocked({Camera});
    QCOMPARE(reason(Camera), QStringLiteral("lock"));

    const QString text = govctl.run(QStringLiteral("explain CameraEnabled")).out;
    QVERIFY(text.startsWith(QStringLiteral("CameraEnabled reads off\n")));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("why +locked\n"))));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("stored +on\n"))));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("lock +yes: "))));
}

void TestGovctlExplain::explainSaysWhatEnforcingDoes()
{
    Daemon daemon;
    QVERIFY(daemon.start());
    Govctl govctl;
    QVERIFY(govctl.run(QStringLiteral("explain CameraEnabled"))
                .out.contains(QStringLiteral("removes /var/lib/govd/camera_enabled")));
    QCOMPARE(govctl.run(QStringLiteral("explain VpnEnabled"))
                 .out.count(QStringLiteral("does nothing by itself")),
             2);
    const QJsonObject effects = govctl.run(QStringLiteral("explain CameraEnabled --json"))
                                    .result()
                                    .value(QStringLiteral("effects"))
                                    .toObject();
    QCOMPARE(effects.value(QStringLiteral("off")).toArray().size(), 2);
}

void TestGovctlExplain::explainKnowsLessForOthers()
{
    Files::write(PolicyFile, "[policy]\nCameraEnabled=false\n");
    Daemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(QFile::setPermissions(PolicyFile, QFile::ReadOwner | QFile::WriteOwner));
    Govctl guest(Identity::of("guest"));
    const QJsonObject camera =
        policy(guest.run(QStringLiteral("explain CameraEnabled --json")).result());
    QCOMPARE(camera.value(QStringLiteral("stored")), QJsonValue(QJsonValue::Null));
    QCOMPARE(camera.value(QStringLiteral("reason")), QJsonValue(QStringLiteral("unknown")));
    QVERIFY(guest.run(QStringLiteral("explain CameraEnabled"))
                .out.contains(QStringLiteral("this user may not read")));
}

void TestGovctlExplain::policyWithoutAValueIsNone()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    lock.setLocked({Camera});
    Daemon daemon;
    QVERIFY(daemon.start());
    lock.setLocked({});
    Govctl govctl;
    const Outcome none = govctl.run(QStringLiteral("get CameraEnabled"));
    QCOMPARE(none.out, QStringLiteral("none\n"));
    QCOMPARE(none.code, 0);
    QCOMPARE(govctl.run(QStringLiteral("get -q CameraEnabled")).code, 1);

    const QJsonObject listed =
        policyIn(govctl.run(QStringLiteral("list --off --json")).result(), Camera);
    QCOMPARE(listed.value(QStringLiteral("value")), QJsonValue(QJsonValue::Null));
    QCOMPARE(listed.value(QStringLiteral("reason")), QJsonValue(QStringLiteral("none")));
    QCOMPARE(govctl.run(QStringLiteral("set CameraEnabled on")).lines().first(),
             QStringLiteral("CameraEnabled: none -> on"));
}

QTEST_GUILESS_MAIN(TestGovctlExplain)
#include "tst_govctlexplain.moc"
