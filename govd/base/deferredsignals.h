// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_DEFERREDSIGNALS_H
#define GOVD_BASE_DEFERREDSIGNALS_H

#include <QtGlobal>

/// Defers SIGINT, SIGTERM and SIGHUP while the object lives; then raises the last one that came.
///
/// It uses handlers, because child processes would inherit a mask. At most one object at a time.
class DeferredSignals
{
    Q_DISABLE_COPY(DeferredSignals)

public:
    DeferredSignals();
    ~DeferredSignals();
};

#endif
