// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_QT_CALLER_H
#define GOVD_BENCHMARK_REFERENCE_QT_CALLER_H

#include <QDBusContext>
#include <QObject>

/// The object on the bus: judges whoever calls it.
class Caller : public QObject, public QDBusContext
{
    Q_OBJECT

public:
    /// Whether the sender of the present call may change anything, by the daemon's rules. One that
    /// may not has its reply when this returns.
    bool isAllowed();
};

#endif
