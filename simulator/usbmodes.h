// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_USBMODES_H
#define GOVD_SIMULATOR_USBMODES_H

#include "simulator/service.h"

#include <QSet>

namespace Simulator {

/// Offers the modes that a USB cable can be used in: the USB-mode service. Only modes on its
/// whitelist are offered; all that it supports are until somebody says otherwise.
class UsbModes : public Service
{
    Q_OBJECT

public:
    UsbModes();

    /// Every mode there is, in alphabetical order.
    static QStringList supportedModes();

    /// The modes on the whitelist, in alphabetical order.
    QStringList whitelistedModes() const;

private:
    Reply setWhitelist(const QString &joined);
    Reply setWhitelisted(const QString &mode, bool isWhitelisted);
    void replaceWhitelist(const QSet<QString> &whitelist);

    QSet<QString> m_whitelist;
};

} // namespace Simulator

#endif
