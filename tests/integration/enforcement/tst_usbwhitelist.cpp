// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/usbmodes.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbour.h"
#include "support/switchplugin.h"
#include "support/usbwhitelist.h"

#include <QTest>

using namespace Support;

class TestUsbWhitelist : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void whitelistHoldsTheAllowedModes_data();
    void whitelistHoldsTheAllowedModes();
    void lockedPolicyCountsAsForbidden();
    void policyWithoutItsSwitchCountsAsForbidden();
    void whitelistIsSentOnceAndBeforeTheModes();
    void whitelistAtStartHoldsWhatIsKnownSoFar_data();
    void whitelistAtStartHoldsWhatIsKnownSoFar();
    void restartedServiceGetsNoWhitelist();
};

void TestUsbWhitelist::whitelistHoldsTheAllowedModes_data()
{
    QTest::addColumn<bool>("usbDeveloperMode");
    QTest::addColumn<bool>("usbMediaTransfer");
    QTest::addColumn<bool>("developerMode");
    QTest::addColumn<QStringList>("modes");
    QTest::newRow("none") << false << false << false << QStringList(QString());
    QTest::newRow("13") << true << false << false << QStringList(Developer);
    QTest::newRow("14") << false << true << false << QStringList(Media);
    QTest::newRow("42") << false << false << true << QStringList(Developer);
    QTest::newRow("13, 14") << true << true << false << QStringList({Developer, Media});
    QTest::newRow("13, 42") << true << false << true << QStringList({Developer, Developer});
    QTest::newRow("14, 42") << false << true << true << QStringList({Developer, Media});
    QTest::newRow("all") << true << true << true << QStringList({Developer, Developer, Media});
}

void TestUsbWhitelist::whitelistHoldsTheAllowedModes()
{
    QFETCH(bool, usbDeveloperMode);
    QFETCH(bool, usbMediaTransfer);
    QFETCH(bool, developerMode);
    QFETCH(QStringList, modes);
    Neighbour<Simulator::UsbModes> service;
    WatchedDaemon daemon;
    UsbWhitelist::writePolicies(usbDeveloperMode, usbMediaTransfer, developerMode);
    QVERIFY(daemon.start());

    service.appear();

    QCOMPARE(UsbWhitelist::sentModes(daemon), modes);
    QCOMPARE(daemon.calls().at(0).section(QLatin1Char(' '), 0, 4),
             UsbWhitelist::setAll(QString()).section(QLatin1Char(' '), 0, 4));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestUsbWhitelist::lockedPolicyCountsAsForbidden()
{
    LockPlugin lock(QStringLiteral("lock.so"), QStringLiteral("lock"),
                    {UsbMediaTransfer, UsbDeveloperMode});
    Neighbour<Simulator::UsbModes> service;
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    lock.setLocked({UsbMediaTransfer});

    service.appear();

    QCOMPARE(UsbWhitelist::sentModes(daemon), QStringList({Developer, Developer}));
}

void TestUsbWhitelist::policyWithoutItsSwitchCountsAsForbidden()
{
    SwitchPlugin plugin;
    plugin.setSwitch(QStringLiteral("usb"), {13, 14}, true);
    Neighbour<Simulator::UsbModes> service;
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    plugin.setEntry(QStringLiteral("usb"), QStringLiteral("value"), false);

    service.appear();

    QCOMPARE(UsbWhitelist::sentModes(daemon), QStringList(Developer));
}

/// The tasks of the start come after it, each once: those of the stored values, then those of the
/// set-up.
void TestUsbWhitelist::whitelistIsSentOnceAndBeforeTheModes()
{
    Neighbour<Simulator::UsbModes> service;
    WatchedDaemon daemon;
    UsbWhitelist::writePolicies(false, true, false);
    QVERIFY(daemon.start());

    service.appear();
    const QStringList once{UsbWhitelist::setMode(Developer, false),
                           UsbWhitelist::setMode(Media, true),
                           UsbWhitelist::setMode(Developer, false)};
    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setAll(Media)) + once + once);

    daemon.forget();
    QVERIFY(daemon.change(UsbMediaTransfer, false));
    QVERIFY(daemon.change(UsbMediaTransfer, true));
    QCOMPARE(
        daemon.calls(),
        QStringList({UsbWhitelist::setMode(Media, false), UsbWhitelist::setMode(Media, true)}));
}

void TestUsbWhitelist::whitelistAtStartHoldsWhatIsKnownSoFar_data()
{
    QTest::addColumn<bool>("usbDeveloperMode");
    QTest::addColumn<QString>("modes");
    QTest::newRow("allowed") << true << Developer;
    QTest::newRow("forbidden") << false << QString();
}

/// With the service there before the daemon, the first policy is enforced while the others have no
/// value yet. Their modes follow one by one.
void TestUsbWhitelist::whitelistAtStartHoldsWhatIsKnownSoFar()
{
    QFETCH(bool, usbDeveloperMode);
    QFETCH(QString, modes);
    Neighbour<Simulator::UsbModes> service;
    service.appear();
    WatchedDaemon daemon;
    UsbWhitelist::writePolicies(usbDeveloperMode, true, true);
    QVERIFY(daemon.startObserved());

    const QStringList once{UsbWhitelist::setMode(Developer, usbDeveloperMode),
                           UsbWhitelist::setMode(Media, true),
                           UsbWhitelist::setMode(Developer, true)};
    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setAll(modes)) + once + once);
}

void TestUsbWhitelist::restartedServiceGetsNoWhitelist()
{
    Neighbour<Simulator::UsbModes> service;
    service.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    service.leave();
    daemon.forget();

    service.appear();
    QVERIFY(daemon.change(UsbMediaTransfer, false));

    QCOMPARE(daemon.calls(), QStringList(UsbWhitelist::setMode(Media, false)));
}

QTEST_GUILESS_MAIN(TestUsbWhitelist)
#include "tst_usbwhitelist.moc"
