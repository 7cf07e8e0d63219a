// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_CONTROL_H
#define GOVD_SIMULATOR_PROGRAM_CONTROL_H

#include "simulator/program/device.h"

namespace Simulator {

/// The object on the bus by which people and scripts see and handle the device.
class Control : public Service
{
    Q_OBJECT

public:
    /// The @p device lives longer.
    explicit Control(Device &device);

private:
    QVector<Method> methods();
    Reply launch(const QString &application);
    Reply setPresent(const QString &word, bool isPresent);
    Reply fail(const QString &word, const QString &fault, double seconds);
    Reply setCertified(bool isCertified);

    Device &m_device;
};

} // namespace Simulator

#endif
