// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_NEIGHBOURS_H
#define GOVD_TESTS_SUPPORT_NEIGHBOURS_H

#include "support/busmonitor.h"

#include "simulator/servicethread.h"

#include <QStringList>

namespace Support {

/// The daemon's neighbours on the bus, which serve while the test or the daemon blocks, and an eye
/// on the calls that they get.
class Neighbours
{
public:
    /// Lets a service of the class @p S of the simulator appear.
    template <typename S> S *add()
    {
        S *service = m_thread.create<S>();
        if (!m_thread.run([service] { return service->appear(); }))
            qFatal("A neighbour cannot take its name");
        return service;
    }

    /// Runs @p function where the services live.
    template <typename Function> auto run(Function function) { return m_thread.run(function); }

    /// What was asked of all services but the bus and the storage service, except introspection, in
    /// the order of the bus, one line each, as in "Set(microphone,disabled)". With @p service of
    /// that one only.
    QStringList calls(const QString &service = QString()) const;

    BusMonitor &monitor() { return m_monitor; }

private:
    BusMonitor m_monitor;
    Simulator::ServiceThread m_thread;
};

} // namespace Support

#endif
