// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_SERVICEPROXY_H
#define GOVD_BASE_SERVICEPROXY_H

#include "names.h"

#include <QDBusAbstractInterface>
#include <QDBusConnection>

/// Proxy of a service's object on the system bus.
///
/// Like the proxies that qdbusxml2cpp generates, and unlike QDBusInterface, it does not read the
/// service's introspection data: a hostile service could exhaust the daemon's memory with it, and
/// a silent one would cost a second time-out.
class ServiceProxy : public QDBusAbstractInterface
{
public:
    explicit ServiceProxy(const Names::RemoteObject &object)
        : QDBusAbstractInterface(object.service, object.path,
                                 object.interface.toLatin1().constData(),
                                 QDBusConnection::systemBus(), nullptr)
    {
    }
};

#endif
