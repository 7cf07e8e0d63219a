// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_CALLER_H
#define GOVD_BENCHMARK_REFERENCE_CALLER_H

#include <QDBusContext>
#include <QObject>

/// The object on the bus, which checks its callers.
class Caller : public QObject, public QDBusContext
{
    Q_OBJECT

public:
    /// Whether the sender of the present call may write, by the daemon's rules. If not, an error
    /// reply has been sent.
    bool isAllowed();
};

#endif
