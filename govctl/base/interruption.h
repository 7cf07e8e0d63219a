// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_INTERRUPTION_H
#define GOVCTL_INTERRUPTION_H

#include <QtGlobal>

/// While one exists, the first SIGINT, SIGTERM or SIGHUP does not end the process but is noted; the
/// second one of a kind ends it. Only one can exist at a time.
class Interruption
{
    Q_DISABLE_COPY(Interruption)

public:
    Interruption();
    ~Interruption();

    bool hasCome() const;
};

#endif
