// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_CONTROLNAMES_H
#define GOVD_SIMULATOR_PROGRAM_CONTROLNAMES_H

#include "simulator/interface.h"

/// The names by which the device is controlled on the bus.
namespace Simulator::ControlNames {

inline const QString Service = QStringLiteral("org.kvt.DeviceSimulator");
inline const QString Path = QStringLiteral("/org/kvt/DeviceSimulator");
inline const QString Interface = QStringLiteral("org.kvt.DeviceSimulator");
inline const QString State = QStringLiteral("State");

/// The longest delay of an answer, in seconds.
inline constexpr double LongestDelay = 3600;

/// The order names something that the device does not know.
inline const QString Unknown = QStringLiteral("org.kvt.DeviceSimulator.Error.Unknown");
/// The order cannot be carried out as the device is now.
inline const QString Refused = QStringLiteral("org.kvt.DeviceSimulator.Error.Refused");

inline Reply unknown(const QString &text)
{
    return Reply::failure(Unknown, text);
}

inline Reply refused(const QString &text)
{
    return Reply::failure(Refused, text);
}

} // namespace Simulator::ControlNames

#endif
