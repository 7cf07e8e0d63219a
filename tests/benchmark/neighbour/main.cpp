// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "simulator/storage.h"

#include <QCoreApplication>

namespace {

/// A stick with one file system, which is mounted.
void plugStick(Simulator::Storage &storage, int number)
{
    const QString drive = storage.plug(Simulator::Drive{
        QStringLiteral("drive%1").arg(number), QStringLiteral("usb"), QStringLiteral("Maker")});
    Simulator::Block block{QStringLiteral("sd%1").arg(number), drive};
    block.mountPoints = QStringList{QStringLiteral("/media/stick%1").arg(number)};
    storage.plug(block);
}

} // namespace

/// govd-benchmark-neighbour STICKS: the application sandbox and the storage service of a device
/// into which so many sticks are plugged.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Simulator::ApplicationSandbox sandbox;
    Simulator::Storage storage;
    const int sticks = application.arguments().value(1).toInt();
    for (int number = 0; number < sticks; ++number)
        plugStick(storage, number);
    if (!storage.appear() || !sandbox.appear())
        return 1;
    return application.exec();
}
