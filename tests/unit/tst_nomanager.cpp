// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "handlers.h"
#include "names.h"
#include "tests/unit/recordingservice.h"

#include <QTest>

/// Handlers without a policy manager; the daemon always has one.
class TestNoManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void usbModesAreLeftAlone();
    void tetheringIsLeftAloneForOtherPolicies();
};

void TestNoManager::usbModesAreLeftAlone()
{
    RecordingService modes(Names::UsbModes.service);
    QVERIFY(modes.appear());

    for (int run = 0; run < 2; ++run) {
        QTest::ignoreMessage(QtWarningMsg, "PolicyManager wasn't set");
        updateUsbModes({PolicyTypes::UsbMediaTransfer, false});
    }

    QCOMPARE(modes.calls(), 0);
}

/// The enforcer never makes this call, because the table lists one policy for the service.
void TestNoManager::tetheringIsLeftAloneForOtherPolicies()
{
    RecordingService wifi(Names::WifiTechnology.service);
    QVERIFY(wifi.appear());

    for (const auto type : {PolicyTypes::None, PolicyTypes::Camera, PolicyTypes::DeveloperMode})
        disableTethering({type, false});
    QCOMPARE(wifi.calls(), 0);

    disableTethering({PolicyTypes::InternetSharing, false});
    QCOMPARE(wifi.calls(), 1);
}

QTEST_GUILESS_MAIN(TestNoManager)
#include "tst_nomanager.moc"
