// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_BOOTED_SERVICE_H
#define GOVD_TESTS_BOOTED_SERVICE_H

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The daemon as systemd's service, and the bus of the booted sandbox.
namespace Service {

/// Runs a program to its end and gives what it has printed. Ends the test program when it fails.
QByteArray run(const QString &program, const QStringList &arguments);

/// Starts the daemon as on a fresh installation.
void startFresh();

/// Process id of the running daemon.
int process();

/// Holds the daemon still as long as the object lives: the bus keeps its messages.
class Pause
{
    Q_DISABLE_COPY(Pause)

public:
    Pause();
    ~Pause();

private:
    int m_process;
};

/// As long as the object lives, the bus lets everybody send everything to the daemon.
class OpenBus
{
    Q_DISABLE_COPY(OpenBus)

public:
    OpenBus();
    ~OpenBus();
};

} // namespace Service

#endif
