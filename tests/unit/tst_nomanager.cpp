// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "enforcer/handlers.h"
#include "simulator/usbmodes.h"
#include "tests/unit/simulatortest.h"

#include <QTest>

/// Handlers while there is no policy manager, which the daemon always has.
class TestNoManager : public SimulatorTest
{
    Q_OBJECT

private Q_SLOTS:
    void usbModesAreLeftAlone();
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

QTEST_GUILESS_MAIN(TestNoManager)
#include "tst_nomanager.moc"
