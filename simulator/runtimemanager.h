// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_RUNTIMEMANAGER_H
#define GOVD_SIMULATOR_RUNTIMEMANAGER_H

#include "simulator/service.h"

namespace Simulator {

/// Runs the device's applications: the application runtime manager.
class RuntimeManager : public Service
{
    Q_OBJECT

public:
    RuntimeManager();

    /// The identifiers of the running applications, in the order in which they were started.
    QStringList runningApplications() const { return m_running; }

    /// Starts an application, as the person who holds the device would. One that runs goes on.
    void start(const QString &application);

private:
    Reply terminate(const QString &application);

    QStringList m_running;
};

} // namespace Simulator

#endif
