// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "systembus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QThread>

#include <memory>

namespace {

bool givenUp = false;

} // namespace

/// Connecting blocks without a time limit, so it runs in a thread that can be abandoned.
bool SystemBus::connect(QDeadlineTimer deadline)
{
    if (givenUp)
        return false;
    QThread *const home = QThread::currentThread();
    std::unique_ptr<QThread> thread(QThread::create([home] {
        // The library's interface object belongs to this thread, whose event loop never runs.
        if (auto *interface = QDBusConnection::systemBus().interface();
            interface && interface->thread() == QThread::currentThread())
            interface->moveToThread(home);
    }));
    thread->start();
    if (thread->wait(deadline))
        return true;
    (void)thread.release();
    givenUp = true;
    return false;
}

bool SystemBus::isGivenUp()
{
    return givenUp;
}
