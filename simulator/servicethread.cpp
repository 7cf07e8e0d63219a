// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/servicethread.h"

namespace Simulator {

ServiceThread::ServiceThread()
    : m_context(std::make_unique<QObject>())
{
    m_context->moveToThread(&m_thread);
    m_thread.start();
}

ServiceThread::~ServiceThread()
{
    run([this] { m_services.clear(); });
    m_thread.quit();
    m_thread.wait();
}

} // namespace Simulator
