// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_CALL_H
#define GOVD_ENFORCER_CALL_H

#include "serviceproxy.h"
#include "watchdog.h"

#include <QDBusError>
#include <QVariantList>

/// Calls @p method of a service and waits for the reply, of which only the outcome matters.
///
/// Each failure has words of its own, in which some name the error and some do not: an error is
/// handed to @p report, which logs it. Returns whether the call succeeded.
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
