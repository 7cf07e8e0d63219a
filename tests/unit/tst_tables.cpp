// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "handlers.h"
#include "tables.h"

#include <QtTest>

namespace {

PolicyType type(int number)
{
    return static_cast<PolicyType>(number);
}

QVector<PolicyType> types(std::initializer_list<int> numbers)
{
    QVector<PolicyType> result;
    for (const int number : numbers)
        result.append(type(number));
    return result;
}

} // namespace

/// The dispatch tables row by row: a row that is added, lost or changed shows here.
class tst_Tables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void directRoute();
    void serviceRoute();
    void applications();
    void usbModes();
};

void tst_Tables::directRoute()
{
    const QHash<PolicyType, PolicyHandler> expected{
        {type(1), markCamera},
        {type(29), terminateBrowsers},
        {type(32), unmountRemovableStorage},
        {type(33), unmountRemovableStorage},
        {type(36), terminateMessages},
        {type(39), markDeveloperShell},
        {type(41), markUserReport},
        {type(42), disableRemoteAccess},
        {type(45), switchUsbDevices},
    };
    QVERIFY(policyHandlers == expected);
}

void tst_Tables::serviceRoute()
{
    const QHash<QString, QPair<QVector<PolicyType>, PolicyHandler>> expected{
        {QStringLiteral("org.pelloraos.appjaild1"),
         {types({1, 29, 20, 35, 36, 41}), updateDenylist}},
        {QStringLiteral("com.meego.usb_moded"), {types({13, 14, 42}), updateUsbModes}},
        {QStringLiteral("org.freedesktop.ohm.mdm"), {types({20}), switchMicrophone}},
        {QStringLiteral("net.connman"), {types({8}), disableTethering}},
        {QStringLiteral("org.kvt.developermode"), {types({42}), disableRemoteAccess}},
    };
    QVERIFY(serviceHandlers == expected);
}

void tst_Tables::applications()
{
    const QHash<PolicyType, QStringList> expected{
        {type(1), {QStringLiteral("org.kvt.cameralockscreen"), QStringLiteral("org.kvt.camera")}},
        {type(29),
         {QStringLiteral("org.kvt.browserstandalone"), QStringLiteral("org.kvt.browserpwa")}},
        {type(36), {QStringLiteral("org.kvt.messages")}},
        {type(35), {QStringLiteral("voicecall-ui")}},
    };
    QCOMPARE(policyApplications, expected);
}

void tst_Tables::usbModes()
{
    QCOMPARE(usbModeNames.size(), 3);
    QCOMPARE(QByteArray(usbModeNames.value(type(13))), QByteArray("developer_mode"));
    QCOMPARE(QByteArray(usbModeNames.value(type(14))), QByteArray("mtp_mode"));
    QCOMPARE(QByteArray(usbModeNames.value(type(42))), QByteArray("developer_mode"));
}

QTEST_APPLESS_MAIN(tst_Tables)
#include "tst_tables.moc"
