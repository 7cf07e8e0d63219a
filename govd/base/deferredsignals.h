// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_DEFERREDSIGNALS_H
#define GOVD_BASE_DEFERREDSIGNALS_H

#include <QtGlobal>

/// As long as the object lives, SIGINT, SIGTERM and SIGHUP wait. What came takes effect afterwards.
///
/// By handlers, not by a mask, which children would inherit. At most one object at a time.
class DeferredSignals
{
    Q_DISABLE_COPY(DeferredSignals)

public:
    DeferredSignals();
    ~DeferredSignals();
};

#endif
