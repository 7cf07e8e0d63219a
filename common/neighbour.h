// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_COMMON_NEIGHBOUR_H
#define GOVD_COMMON_NEIGHBOUR_H

#include "common/names.h"

#include <QDBusConnection>
#include <QDBusInterface>

/// Builds the proxy of a neighbour's object on the system bus.
///
/// Building it asks the neighbour for its introspection data and waits for the answer: an absent
/// service answers at once, an activatable one is started, a silent one costs the bus's time-out.
inline QDBusInterface neighbour(const Names::RemoteObject &object)
{
    return QDBusInterface(object.service, object.path, object.interface,
                          QDBusConnection::systemBus());
}

#endif
