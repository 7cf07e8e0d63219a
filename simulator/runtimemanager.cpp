// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/runtimemanager.h"

namespace Simulator {

RuntimeManager::RuntimeManager()
    : Service(QStringLiteral("org.kvt.RuntimeManager"))
{
    const auto run = [this](const Call &call) {
        return terminate(call.arguments.at(0).toString());
    };
    objects().add(QStringLiteral("/org/kvt/RuntimeManager/Control1"),
                  {QStringLiteral("org.kvt.RuntimeManager.Control1"),
                   {{QStringLiteral("Terminate"), QStringLiteral("s"), {}, run}},
                   {},
                   {}});
}

void RuntimeManager::start(const QString &application)
{
    if (m_running.contains(application))
        return;
    m_running.append(application);
    Q_EMIT changed();
}

Reply RuntimeManager::terminate(const QString &application)
{
    if (application.isEmpty())
        return Reply::invalidArguments(QStringLiteral("An application has an identifier"));
    if (!m_running.removeOne(application))
        return Reply::failure(QStringLiteral("org.kvt.RuntimeManager.Error.NotRunning"),
                              application + QStringLiteral(" is not running"));
    Q_EMIT changed();
    return {};
}

} // namespace Simulator
