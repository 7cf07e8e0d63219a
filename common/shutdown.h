// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMON_SHUTDOWN_H
#define GOVD_COMMON_SHUTDOWN_H

#include <QObject>
#include <QScopedPointer>

class QCoreApplication;
class QSocketNotifier;

/// Ends the event loop, and with it the process in good order, at SIGTERM, at SIGINT, and when the
/// connection to the system bus is lost: nobody could reach the daemon any more, and the service
/// manager starts it again.
class Shutdown : public QObject
{
    Q_OBJECT

public:
    /// Keeps SIGTERM and SIGINT waiting until a Shutdown takes them. To be called first of all in
    /// main(), because threads started earlier would still be killed by them.
    static void holdTerminationSignals();

    /// Takes requests, those that are already waiting too, as soon as the event loop runs.
    explicit Shutdown(QCoreApplication *application);
    ~Shutdown() override;

private:
    int m_signals;
    QScopedPointer<QSocketNotifier> m_notifier;
};

#endif
