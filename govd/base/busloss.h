// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_BUSLOSS_H
#define GOVD_BASE_BUSLOSS_H

#include <QObject>

/// Tells when the connection to the system bus is lost. Qt does not connect again.
class BusLoss : public QObject
{
    Q_OBJECT

public:
    BusLoss();

Q_SIGNALS:
    void lost();
};

#endif
