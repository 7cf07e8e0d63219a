// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"
#include "simulator/storage.h"
#include "simulator/systemlogs.h"

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

int runSystemLogs()
{
    Simulator::SystemLogs logs;
    return logs.appear() ? QCoreApplication::exec() : 1;
}

int runSandboxAndStorage(int sticks)
{
    Simulator::ApplicationSandbox sandbox;
    Simulator::Storage storage;
    for (int number = 0; number < sticks; ++number)
        plugStick(storage, number);
    if (!storage.appear() || !sandbox.appear())
        return 1;
    return QCoreApplication::exec();
}

} // namespace

/// govd-benchmark-neighbour STICKS: the application sandbox and the storage service of a device
/// into which so many sticks are plugged.
/// govd-benchmark-neighbour logs: the system-log service.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QString what = QCoreApplication::arguments().value(1);
    return what == QLatin1String("logs") ? runSystemLogs() : runSandboxAndStorage(what.toInt());
}
