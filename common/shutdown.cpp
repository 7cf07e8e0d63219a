// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/shutdown.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QSocketNotifier>

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t terminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

} // namespace

void Shutdown::holdTerminationSignals()
{
    const sigset_t signals = terminationSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

Shutdown::Shutdown(QCoreApplication *application)
{
    const sigset_t signals = terminationSignals();
    m_signals = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    m_notifier.reset(new QSocketNotifier(m_signals, QSocketNotifier::Read));
    connect(m_notifier.data(), &QSocketNotifier::activated, application, &QCoreApplication::quit);

    QDBusConnection::systemBus().connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                                         QStringLiteral("org.freedesktop.DBus.Local"),
                                         QStringLiteral("Disconnected"), application, SLOT(quit()));
}

Shutdown::~Shutdown()
{
    m_notifier.reset(); // before its descriptor can become another file's
    close(m_signals);
}
