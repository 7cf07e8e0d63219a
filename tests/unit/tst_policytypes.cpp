// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policytypes.h"

#include <QtTest>

class tst_PolicyTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void convertsBothWays();
    void knowsTheNumbersItActsOn_data();
    void knowsTheNumbersItActsOn();
    void unknownKeyIsNoPolicy_data();
    void unknownKeyIsNoPolicy();
    void unknownTypeHasNoKey_data();
    void unknownTypeHasNoKey();
    void noPolicyHasAKey();
    void numbersAreDense();
};

void tst_PolicyTypes::convertsBothWays()
{
    const QMetaEnum types = PolicyTypes::enumeration();
    QVERIFY(types.isValid());
    for (int i = 0; i < types.keyCount(); ++i) {
        const auto type = static_cast<PolicyType>(types.value(i));
        QCOMPARE(typeToKey(type), QString::fromLatin1(types.key(i)));
        QCOMPARE(keyToType(typeToKey(type)), type);
    }
}

void tst_PolicyTypes::knowsTheNumbersItActsOn_data()
{
    QTest::addColumn<PolicyType>("type");
    QTest::addColumn<QString>("key");
    const auto row = [](PolicyType type, const char *key) {
        QTest::newRow(key) << type << QString::fromLatin1(key);
    };
    row(PolicyTypes::None, "NoPolicy");
    row(PolicyTypes::Camera, "CameraEnabled");
    row(PolicyTypes::InternetSharing, "InternetSharingEnabled");
    row(PolicyTypes::UsbDeveloperMode, "UsbDeveloperModeEnabled");
    row(PolicyTypes::UsbMediaTransfer, "UsbMediaTransferEnabled");
    row(PolicyTypes::Microphone, "MicrophoneEnabled");
    row(PolicyTypes::Browser, "BrowserEnabled");
    row(PolicyTypes::MemoryCard, "MemoryCardEnabled");
    row(PolicyTypes::UsbStorage, "UsbStorageEnabled");
    row(PolicyTypes::VoiceCalls, "VoiceCallsEnabled");
    row(PolicyTypes::Messages, "MessagesEnabled");
    row(PolicyTypes::DeveloperShell, "DeveloperShellEnabled");
    row(PolicyTypes::UserReport, "UserReportExportEnabled");
    row(PolicyTypes::DeveloperMode, "DeveloperModeEnabled");
    row(PolicyTypes::UsbDevices, "UsbDevicesEnabled");
}

void tst_PolicyTypes::knowsTheNumbersItActsOn()
{
    QFETCH(PolicyType, type);
    QFETCH(QString, key);
    QCOMPARE(typeToKey(type), key);
    QCOMPARE(keyToType(key), type);
}

void tst_PolicyTypes::unknownKeyIsNoPolicy_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("empty") << QString();
    QTest::newRow("foreign") << QStringLiteral("TeleportEnabled");
    QTest::newRow("other letter case") << QStringLiteral("cameraEnabled");
    QTest::newRow("upper case") << QStringLiteral("CAMERAENABLED");
    QTest::newRow("trailing blank") << QStringLiteral("CameraEnabled ");
    QTest::newRow("qualified") << QStringLiteral("Pellora::PolicyValue::CameraEnabled");
    QTest::newRow("number") << QStringLiteral("1");
    QTest::newRow("not in Latin-1") << QStringLiteral("K\u0430mera");
}

void tst_PolicyTypes::unknownKeyIsNoPolicy()
{
    QFETCH(QString, key);
    QCOMPARE(keyToType(key), PolicyTypes::None);
}

void tst_PolicyTypes::unknownTypeHasNoKey_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("negative") << -1;
    QTest::newRow("behind the last") << PolicyTypes::enumeration().keyCount();
    QTest::newRow("largest") << std::numeric_limits<int>::max();
}

void tst_PolicyTypes::unknownTypeHasNoKey()
{
    QFETCH(int, number);
    QVERIFY(typeToKey(static_cast<PolicyType>(number)).isNull());
}

void tst_PolicyTypes::noPolicyHasAKey()
{
    QCOMPARE(typeToKey(PolicyTypes::None), QStringLiteral("NoPolicy"));
}

void tst_PolicyTypes::numbersAreDense()
{
    // The walk by value relies on this: every number from 0 to the count has a key.
    const QMetaEnum types = PolicyTypes::enumeration();
    QVERIFY(types.keyCount() > static_cast<int>(PolicyTypes::UsbDevices));
    for (int value = 0; value < types.keyCount(); ++value)
        QVERIFY(types.valueToKey(value));
}

QTEST_APPLESS_MAIN(tst_PolicyTypes)
#include "tst_policytypes.moc"
