// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "busloss.h"
#include "busthread.h"
#include "journal.h"
#include "log.h"
#include "names.h"
#include "partitions.h"
#include "policymanager.h"
#include "unixsignal.h"
#include "watchdog.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDebug>

#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

/// Prints the version or the usage, because the daemon takes no arguments. Returns the exit code.
int explain(const char *argument)
{
    if (std::strcmp(argument, "--version") == 0) {
        (void)std::puts("govd " GOVD_VERSION);
        return 0;
    }
    const bool isAsked = std::strcmp(argument, "--help") == 0;
    (void)std::fputs(
        "Usage: govd\n"
        "\n"
        "Keeps and enforces the device's policies, on the system bus as org.kvt.PolicyManager.\n"
        "It takes no arguments and is started by the service manager; see govd(8).\n"
        "\n"
        "  --help      this text\n"
        "  --version   the version\n",
        isAsked ? stdout : stderr);
    return isAsked ? 0 : 2;
}

/// While @p manager lives, SIGINT and SIGTERM end the event loop and SIGHUP enforces all policies.
void handleSignals(PolicyManager *manager)
{
    for (const int number : {SIGINT, SIGTERM})
        QObject::connect(new UnixSignal(number, manager), &UnixSignal::caught,
                         &QCoreApplication::quit);
    QObject::connect(new UnixSignal(SIGHUP, manager), &UnixSignal::caught, manager,
                     &PolicyManager::setupPolicies);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1)
        return explain(argv[1]);
    Log::install();
    JournalRecord::findJournal();
    QCoreApplication application(argc, argv);
    const BusLoss busLoss;
    QObject::connect(&busLoss, &BusLoss::lost, [] {
        qWarning() << "Lost the connection to the system bus";
        QCoreApplication::quit();
    });
    // QtDBus dispatches nothing on a new connection, not even the loss of the bus, before this
    // event is delivered: a blocking call would never return if the bus ended before.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    BusThread::liftLimits();
    BusThread::catchUp();

    PolicyManager manager(nullptr);
    QObject::connect(&partitionManager, &PartitionManager::partitionAdded, &manager,
                     &PolicyManager::processPartition);
    manager.setupPolicies();

    // Not earlier, so that a signal ends a start that waits for a service: files are replaced by
    // renaming, so none is left incomplete. From here on only calls to the bus itself block.
    handleSignals(&manager);

    // The object comes before the name, and both after all values are loaded and enforced: a client
    // that sees the name can use the object at once.
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(Names::ObjectPath, &manager, QDBusConnection::ExportAdaptors)
        || !bus.registerService(Names::Service)) {
        qCritical() << bus.lastError().message();
        return 1;
    }
    BusThread::catchUp();

    const Watchdog watchdog;
    application.exec();
    return 0;
}
