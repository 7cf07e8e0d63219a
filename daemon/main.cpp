// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/log.h"
#include "common/names.h"
#include "common/shutdown.h"
#include "common/watchdog.h"
#include "daemon/busthread.h"
#include "daemon/policymanager.h"
#include "daemon/removablestorage.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDebug>

int main(int argc, char **argv)
{
    Log::install();
    Shutdown::holdTerminationSignals();
    QCoreApplication application(argc, argv);
    const Shutdown shutdown(&application);
    // A new connection holds back what it receives, the loss of the bus included, until this event
    // of it is delivered: a blocking call before that would never return.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    BusThread::liftLimits();
    BusThread::catchUp();

    PolicyManager manager(nullptr);
    QObject::connect(&partitionManager, &PartitionManager::partitionAdded, &manager,
                     &PolicyManager::processPartition);
    manager.setupPolicies();

    // All values are loaded and enforced by now, and the object is there before the name: the
    // first client that sees the name finds everything in place.
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(Names::ObjectPath, &manager, QDBusConnection::ExportAdaptors)
        || !bus.registerService(Names::Service)) {
        qCritical() << bus.lastError().message();
        return 1;
    }
    BusThread::catchUp();

    Watchdog::start(&manager);
    application.exec();
    return 0;
}
