// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_FACTS_H
#define GOVD_TESTS_SUPPORT_FACTS_H

#include <QString>

namespace Support {

// What is fixed about the daemon, and many tests are about. Written down once more, and not taken
// from its sources, so that a slip there is seen here.

inline const QString Service = QStringLiteral("org.kvt.PolicyManager");

inline const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
inline const QString SwitchFile = QStringLiteral("/etc/policy/switch.conf");

inline const QString Camera = QStringLiteral("CameraEnabled");
inline const QString CameraMarker = QStringLiteral("/var/lib/govd/camera_enabled");

inline const QString DeveloperShellMarker = QStringLiteral("/var/lib/devel-su/.disable");

inline const QString Microphone = QStringLiteral("MicrophoneEnabled");
inline const QString MemoryCard = QStringLiteral("MemoryCardEnabled");
inline const QString UsbDevices = QStringLiteral("UsbDevicesEnabled");
inline const QString UsbStorage = QStringLiteral("UsbStorageEnabled");

// A value, as the files and the events have it.
inline const QString Yes = QStringLiteral("true");
inline const QString No = QStringLiteral("false");

} // namespace Support

#endif
