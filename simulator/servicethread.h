// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_SERVICETHREAD_H
#define GOVD_SIMULATOR_SERVICETHREAD_H

#include "simulator/service.h"

#include <QThread>

#include <memory>
#include <vector>

namespace Simulator {

/// A thread with an event loop in which services live that must answer while their caller, in
/// another thread, blocks. Services are made, asked and told things there: through run().
class ServiceThread
{
public:
    ServiceThread();
    ~ServiceThread();

    /// Makes a service of the class @p S in the thread. It lives as long as the thread.
    template <typename S> S *create()
    {
        return run([this] {
            m_services.push_back(std::make_unique<S>());
            return static_cast<S *>(m_services.back().get());
        });
    }

    /// Runs @p function in the thread and returns what it returns.
    template <typename Function> auto run(Function function)
    {
        using Result = decltype(function());
        if constexpr (std::is_void_v<Result>) {
            QMetaObject::invokeMethod(m_context.get(), function, Qt::BlockingQueuedConnection);
        } else {
            Result result{};
            QMetaObject::invokeMethod(
                m_context.get(), [&] { result = function(); }, Qt::BlockingQueuedConnection);
            return result;
        }
    }

private:
    QThread m_thread;
    std::unique_ptr<QObject> m_context;
    std::vector<std::unique_ptr<Service>> m_services;
};

} // namespace Simulator

#endif
