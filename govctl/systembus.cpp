// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/systembus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QThread>

#include <memory>

namespace {

bool givenUp = false;

} // namespace

/// Connecting blocks, so it is left to a thread that can be given up.
bool SystemBus::connect(QDeadlineTimer deadline)
{
    if (givenUp)
        return false;
    QThread *const home = QThread::currentThread();
    std::unique_ptr<QThread> thread(QThread::create([home] {
        // The library's own object would stay behind in this thread and get no more events.
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
