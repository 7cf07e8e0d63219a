// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/systemlogs.h"

namespace Simulator {

SystemLogs::SystemLogs()
    : Service(QStringLiteral("org.kvtlabs.SystemLogs"))
{
    const auto send = [this](const Call &call) {
        return addEvent({call.arguments.at(0).toString(), call.arguments.at(1).toString(),
                         call.arguments.at(2).toString()});
    };
    objects().add(QStringLiteral("/org/kvtlabs/SystemLogs"),
                  {name(),
                   {{QStringLiteral("sendEventStringAlt"), QStringLiteral("sss"), {}, send}},
                   {},
                   {}});
}

Reply SystemLogs::addEvent(const Event &event)
{
    static const QStringList levels{QStringLiteral("DEBUG_LEVEL"), QStringLiteral("INFO_LEVEL"),
                                    QStringLiteral("WARNING_LEVEL"), QStringLiteral("ERROR_LEVEL")};
    if (event.kind.isEmpty())
        return Reply::invalidArguments(QStringLiteral("An event needs a kind"));
    if (!levels.contains(event.level))
        return Reply::invalidArguments(event.level + QStringLiteral(" is no level"));
    m_events.append(event);
    Q_EMIT changed();
    return {};
}

} // namespace Simulator
