// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_CARRIERS_H
#define GOVCTL_CARRIERS_H

#include "govctl/evidence.h"
#include "names.h"

#include <QDBusMessage>

/// The state of the services that the daemon calls, where it can be read. Reads each at most once.
class Surroundings
{
public:
    explicit Surroundings(Daemon &daemon)
        : m_daemon(daemon)
    {
    }

    bool isOnBus(const QString &service);

    /// A property of the USB manager, or of the Wi-Fi technology; empty when it cannot be read.
    std::optional<bool> usbEnabled();
    std::optional<bool> tethering();

    /// The mount points of removable storage on the bus that the policy @p type governs.
    QStringList mounts(int type);

private:
    Daemon &m_daemon;
    std::optional<QStringList> m_names;
};

/// A marker file or a service by which a policy is enforced, and how to check it.
struct Carrier
{
    int type;
    QString name; ///< of the file or the service
    Finding (*look)(Surroundings &surroundings, const Carrier &carrier, bool value);
};

/// All carriers; a policy can have several.
const QVector<Carrier> &carriers();

#endif
