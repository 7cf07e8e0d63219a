// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_CALL_H
#define GOVD_ENFORCER_CALL_H

#include "serviceproxy.h"
#include "watchdog.h"

#include <QDBusError>
#include <QVariantList>

/// Calls @p method of a service, waits for the reply and returns whether it is no error.
///
/// @p report gets the error and logs it: the lines are fixed, and only some contain the error.
template <typename Report>
bool callOrReport(ServiceProxy &proxy, const QString &method, const QVariantList &arguments,
                  Report report)
{
    const QDBusError error(proxy.callWithArgumentList(QDBus::Block, method, arguments));
    if (error.isValid())
        report(error);
    Watchdog::checkBus();
    return !error.isValid();
}

#endif
