// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_NEIGHBOUR_H
#define GOVD_TESTS_SUPPORT_NEIGHBOUR_H

#include "simulator/servicethread.h"
#include "support/trouble.h"

namespace Support {

/// A neighbour service of the daemon, in a thread of its own, so that it answers while the test
/// waits for something else. Absent until appear().
template <typename S> class Neighbour
{
    Q_DISABLE_COPY(Neighbour)

public:
    Neighbour()
        : m_service(m_thread.create<S>())
    {
    }

    QString name() const { return m_service->name(); }

    /// Puts the service on the bus. Returns when it has its name.
    void appear()
    {
        if (!ask([](S &service) { return service.appear(); }))
            qFatal("A neighbour cannot get on the bus");
    }

    /// Takes the service off the bus, as if its process had ended.
    void leave()
    {
        ask([](S &service) { service.leave(); });
    }

    /// Makes every call fail, until it is changed or mend() is called.
    void fail(const Simulator::Fault &fault)
    {
        ask([&](S &service) { service.setFault(fault); });
    }

    /// Makes the calls of one method fail.
    void fail(const QString &method, const Simulator::Fault &fault)
    {
        ask([&](S &service) { service.setFault(method, fault); });
    }

    /// Gets into trouble from the next call on. A service that is to be absent leaves.
    void suffer(const Trouble &trouble)
    {
        if (trouble.isAbsence())
            leave();
        else
            fail(trouble.fault);
    }

    void mend()
    {
        ask([](S &service) { service.clearFaults(); });
    }

    /// Returns what @p question gives for the service, asked in its thread.
    template <typename Question> auto ask(Question question)
    {
        return m_thread.run([&] { return question(*m_service); });
    }

private:
    Simulator::ServiceThread m_thread;
    S *m_service;
};

} // namespace Support

#endif
