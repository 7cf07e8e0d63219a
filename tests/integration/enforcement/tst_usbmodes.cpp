// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/developermode.h"
#include "simulator/usbmodes.h"
#include "support/files.h"
#include "support/neighbour.h"
#include "support/usbwhitelist.h"
#include "support/wording.h"

#include <QTest>

using Simulator::Fault;
using namespace Support;

namespace {

const QString SetOne = QStringLiteral("set_whitelisted");

void addModeRows()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("mode");
    QTest::newRow("13") << UsbDeveloperMode << Developer;
    QTest::newRow("14") << UsbMediaTransfer << Media;
    QTest::newRow("42") << DeveloperMode << Developer;
}

} // namespace

/// The single modes. Those that a person may choose from as a whole are in tst_usbwhitelist.
class TestUsbModes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void modeFollowsThePolicyBothWays_data();
    void modeFollowsThePolicyBothWays();
    void lastChangeDecidesAboutASharedMode();
    void failureNamesTheDirectionTheModeAndTheError_data();
    void failureNamesTheDirectionTheModeAndTheError();
    void oddAnswerIsSuccess_data();
    void oddAnswerIsSuccess();
    void failedModeDoesNotSendTheWhitelistAgain();
    void developerModeReachesBothItsServices();
};

void TestUsbModes::modeFollowsThePolicyBothWays_data()
{
    addModeRows();
}

void TestUsbModes::modeFollowsThePolicyBothWays()
{
    QFETCH(QString, key);
    QFETCH(QString, mode);
    Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(key, false));
    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setMode(mode, false)));

    daemon.forget();
    QVERIFY(daemon.change(key, true));
    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setMode(mode, true)));
    QCOMPARE(daemon.logged(), QStringList());
}

/// Forbidden by one policy, the mode is off although the other one allows it, and the other way
/// round.
void TestUsbModes::lastChangeDecidesAboutASharedMode()
{
    Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const auto whitelisted = [](Simulator::UsbModes &service) {
        return service.whitelistedModes().contains(Developer);
    };

    daemon.forget();
    QVERIFY(daemon.change(DeveloperMode, false));
    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setMode(Developer, false)));
    QVERIFY(!modes.ask(whitelisted));

    QVERIFY(daemon.change(UsbDeveloperMode, false));
    daemon.forget();
    QVERIFY(daemon.change(UsbDeveloperMode, true));
    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setMode(Developer, true)));
    QVERIFY(modes.ask(whitelisted));
}

void TestUsbModes::failureNamesTheDirectionTheModeAndTheError_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<bool>("value");
    const QStringList keys{UsbDeveloperMode, UsbMediaTransfer};
    for (const Trouble &trouble : Trouble::of(UsbModesName)) {
        for (const QString &key : keys) {
            const bool isMedia = key == UsbMediaTransfer;
            const QString mode = isMedia ? Media : Developer;
            for (const bool value : {false, true})
                QTest::newRow(trouble.name + (isMedia ? ", 14" : ", 13")
                              + (value ? ", enable" : ", disable"))
                    << trouble << key << mode << value;
        }
    }
}

void TestUsbModes::failureNamesTheDirectionTheModeAndTheError()
{
    QFETCH(Trouble, trouble);
    QFETCH(QString, key);
    QFETCH(QString, mode);
    QFETCH(bool, value);
    Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    if (value)
        QVERIFY(daemon.change(key, false));
    daemon.forget();
    modes.suffer(trouble);

    QVERIFY(daemon.change(key, value));

    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setMode(mode, value)));
    const QString line = value
        ? QStringLiteral("warning|default|Failed to enable USB mode \"%1\" \"%2\"")
        : QStringLiteral("warning|default|Failed to disable USB mode \"%1\" \"%2\"");
    QCOMPARE(daemon.logged(), QStringList(line.arg(mode, trouble.errorName)));
}

void TestUsbModes::oddAnswerIsSuccess_data()
{
    Oddity::addRows();
}

void TestUsbModes::oddAnswerIsSuccess()
{
    QFETCH(Oddity, oddity);
    Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    modes.fail(oddity.fault);

    QVERIFY(daemon.change(UsbMediaTransfer, false));

    QCOMPARE(daemon.calls(UsbModesName), QStringList(UsbWhitelist::setMode(Media, false)));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestUsbModes::failedModeDoesNotSendTheWhitelistAgain()
{
    Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.startObserved());
    QCOMPARE(UsbWhitelist::sent(daemon).size(), 1);
    daemon.forget();
    modes.fail(SetOne, Fault::error());
    QVERIFY(daemon.change(UsbMediaTransfer, false));
    modes.mend();

    QVERIFY(daemon.change(UsbMediaTransfer, true));

    QCOMPARE(UsbWhitelist::sent(daemon), QStringList());
}

/// The developer-mode service hears of it on both routes, the USB modes on one, and the direct
/// call is the first of all.
void TestUsbModes::developerModeReachesBothItsServices()
{
    Neighbour<Simulator::DeveloperMode> developerMode;
    developerMode.appear();
    Neighbour<Simulator::UsbModes> modes;
    modes.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QVERIFY(daemon.change(DeveloperMode, false));

    QStringList calls = daemon.calls();
    const QString remoteAccess =
        Wording::call(QStringLiteral("org.kvt.developermode / org.kvt.developermode"),
                      QStringLiteral("SetRemoteConnectionEnabled"), QStringLiteral("b"), {false});
    QCOMPARE(calls.value(0), remoteAccess);
    calls.sort();
    QCOMPARE(calls,
             QStringList({UsbWhitelist::setMode(Developer, false), remoteAccess, remoteAccess}));
}

QTEST_GUILESS_MAIN(TestUsbModes)
#include "tst_usbmodes.moc"
