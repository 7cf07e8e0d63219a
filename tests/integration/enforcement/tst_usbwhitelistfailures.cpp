// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/usbmodes.h"
#include "support/files.h"
#include "support/neighbour.h"
#include "support/usbwhitelist.h"

#include <QTest>

using Simulator::Fault;
using namespace Support;

namespace {

QString whitelistFailure(const QString &error)
{
    return QStringLiteral("warning|default|Failed to update USB mode whitelist \"%1\"").arg(error);
}

QString modeFailure(const QString &mode, const QString &error)
{
    return QStringLiteral("warning|default|Failed to enable USB mode \"%1\" \"%2\"")
        .arg(mode, error);
}

} // namespace

class TestUsbWhitelistFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void whitelistIsSentAgainAfterAFailure();
    void deathInTheWhitelistIsAFailure();
    void oddAnswerIsSuccess_data();
    void oddAnswerIsSuccess();
    void absentServiceOfAnUnsentWhitelistFailsTwice();
};

/// Each run tries until the service has taken the list, and goes on with its own mode all the
/// same.
void TestUsbWhitelistFailures::whitelistIsSentAgainAfterAFailure()
{
    Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"),
                 Fault::error(QStringLiteral("org.example.Refused")));
    WatchedDaemon daemon;
    UsbWhitelist::writePolicies(false, true, false);
    QVERIFY(daemon.start());
    const QString all = UsbWhitelist::setAll(Media);

    service.appear();
    const QStringList once{all, UsbWhitelist::setMode(Developer, false),
                           all, UsbWhitelist::setMode(Media, true),
                           all, UsbWhitelist::setMode(Developer, false)};
    QCOMPARE(daemon.calls(), once + once);
    const QString failure = whitelistFailure(QStringLiteral("org.example.Refused"));
    QCOMPARE(daemon.logged(), QStringList({failure, failure, failure, failure, failure, failure}));

    daemon.forget();
    service.mend();
    QVERIFY(daemon.change(UsbDeveloperMode, true));
    QVERIFY(daemon.change(UsbMediaTransfer, false));
    QCOMPARE(UsbWhitelist::sentModes(daemon), QStringList({Developer, Media}));
    QCOMPARE(
        daemon.calls().mid(1),
        QStringList({UsbWhitelist::setMode(Developer, true), UsbWhitelist::setMode(Media, false)}));
    QCOMPARE(daemon.logged(), QStringList());
}

void TestUsbWhitelistFailures::deathInTheWhitelistIsAFailure()
{
    Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"), Fault::death());
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    service.appear();

    const QString noReply = QStringLiteral("org.freedesktop.DBus.Error.NoReply");
    const QString unknown = QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown");
    const QStringList log = daemon.logged();
    QCOMPARE(log.value(0), whitelistFailure(noReply));
    QCOMPARE(log.value(1), modeFailure(Developer, unknown));
    QCOMPARE(log.value(2), whitelistFailure(unknown));
    QCOMPARE(log.value(3), modeFailure(Media, unknown));
    QCOMPARE(log.size(), 12);
}

void TestUsbWhitelistFailures::oddAnswerIsSuccess_data()
{
    Oddity::addRows();
}

void TestUsbWhitelistFailures::oddAnswerIsSuccess()
{
    QFETCH(Oddity, oddity);
    Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"), oddity.fault);
    WatchedDaemon daemon;
    UsbWhitelist::writePolicies(false, true, false);
    QVERIFY(daemon.start());

    service.appear();

    QCOMPARE(UsbWhitelist::sentModes(daemon), QStringList(Media));
    QCOMPARE(daemon.logged(), QStringList());
}

/// Seen once, the service is sent its tasks although it has left.
void TestUsbWhitelistFailures::absentServiceOfAnUnsentWhitelistFailsTwice()
{
    Neighbour<Simulator::UsbModes> service;
    service.fail(QStringLiteral("set_whitelisted_modes"), Fault::error());
    service.appear();
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    service.leave();
    daemon.forget();

    QVERIFY(daemon.change(UsbMediaTransfer, false));

    const QString unknown = QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown");
    QCOMPARE(daemon.logged(),
             QStringList({whitelistFailure(unknown),
                          QStringLiteral("warning|default|Failed to disable USB mode \"mtp_mode\""
                                         " \"org.freedesktop.DBus.Error.ServiceUnknown\"")}));
    QCOMPARE(UsbWhitelist::sentModes(daemon), QStringList({Developer, Developer}));
}

QTEST_GUILESS_MAIN(TestUsbWhitelistFailures)
#include "tst_usbwhitelistfailures.moc"
