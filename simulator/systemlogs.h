// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_SYSTEMLOGS_H
#define GOVD_SIMULATOR_SYSTEMLOGS_H

#include "simulator/service.h"

namespace Simulator {

/// Keeps the events of the device: the system-log service.
class SystemLogs : public Service
{
    Q_OBJECT

public:
    struct Event
    {
        QString kind;
        QString level;
        QString text;
    };

    SystemLogs();

    /// The events so far, oldest first.
    QVector<Event> events() const { return m_events; }

private:
    Reply addEvent(const Event &event);

    QVector<Event> m_events;
};

} // namespace Simulator

#endif
