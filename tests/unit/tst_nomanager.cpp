// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "handlers.h"
#include "simulator/networktechnology.h"
#include "simulator/usbmodes.h"
#include "tests/unit/simulatortest.h"

#include <QTest>

/// Handlers while there is no policy manager, which the daemon always has.
class TestNoManager : public SimulatorTest
{
    Q_OBJECT

private Q_SLOTS:
    void usbModesAreLeftAlone();
    void tetheringIsLeftAloneForOtherPolicies();
};

void TestNoManager::usbModesAreLeftAlone()
{
    auto *const modes = host<Simulator::UsbModes>();

    for (int run = 0; run < 2; ++run) {
        QTest::ignoreMessage(QtWarningMsg, "PolicyManager wasn't set");
        updateUsbModes({PolicyTypes::UsbMediaTransfer, false});
    }

    QCOMPARE(there([=] { return modes->calls().size(); }), 0);
    QCOMPARE(there([=] { return modes->whitelistedModes(); }),
             Simulator::UsbModes::supportedModes());
}

/// The enforcer never asks for this, because the table lists one policy for the service.
void TestNoManager::tetheringIsLeftAloneForOtherPolicies()
{
    auto *const wifi = host<Simulator::NetworkTechnology>();

    for (const auto type : {PolicyTypes::None, PolicyTypes::Camera, PolicyTypes::DeveloperMode})
        disableTethering({type, false});
    QCOMPARE(there([=] { return wifi->calls().size(); }), 0);

    disableTethering({PolicyTypes::InternetSharing, false});
    QCOMPARE(there([=] { return wifi->calls().size(); }), 1);
}

QTEST_GUILESS_MAIN(TestNoManager)
#include "tst_nomanager.moc"
