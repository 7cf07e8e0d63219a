// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_USBWHITELIST_H
#define GOVD_TESTS_SUPPORT_USBWHITELIST_H

#include "support/watcheddaemon.h"

namespace Support {

inline const QString UsbModesName = QStringLiteral("com.meego.usb_moded");

// The policies that a USB mode depends on, and these modes.
inline const QString UsbDeveloperMode = QStringLiteral("UsbDeveloperModeEnabled");
inline const QString UsbMediaTransfer = QStringLiteral("UsbMediaTransferEnabled");
inline const QString DeveloperMode = QStringLiteral("DeveloperModeEnabled");
inline const QString Developer = QStringLiteral("developer_mode");
inline const QString Media = QStringLiteral("mtp_mode");

/// The modes that the daemon tells the USB-mode service to allow.
namespace UsbWhitelist {

/// Writes the policy file with these values.
void writePolicies(bool usbDeveloperMode, bool usbMediaTransfer, bool developerMode);

/// The line of WatchedDaemon::calls() for the whole list, the modes joined by commas.
QString setAll(const QString &modes);

/// The same for one mode.
QString setMode(const QString &mode, bool isAllowed);

/// The whole lists that were sent, each as its text.
QStringList sent(WatchedDaemon &daemon);

/// The modes, sorted, of the one whole list that was sent; the order among them is not settled.
QStringList sentModes(WatchedDaemon &daemon);

} // namespace UsbWhitelist

} // namespace Support

#endif
