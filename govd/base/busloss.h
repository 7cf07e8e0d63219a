// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_BUSLOSS_H
#define GOVD_BASE_BUSLOSS_H

#include <QObject>

/// Signals the loss of the connection to the system bus, which Qt does not open again.
class BusLoss : public QObject
{
    Q_OBJECT

public:
    BusLoss();

Q_SIGNALS:
    void lost();
};

#endif
