// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_CARRIERS_H
#define GOVCTL_CARRIERS_H

#include "govctl/evidence.h"
#include "names.h"

#include <QDBusMessage>

/// The services around the daemon, as far as they let one look. Asks each at most once.
class Surroundings
{
public:
    explicit Surroundings(Daemon &daemon)
        : m_daemon(daemon)
    {
    }

    bool isOnBus(const QString &service);

    /// A property of the USB manager, or of the Wi-Fi technology; nothing when it does not tell.
    std::optional<bool> usbEnabled();
    std::optional<bool> tethering();

    /// Where removable storage on the bus that the policy @p type governs is mounted.
    QStringList mounts(int type);

private:
    Daemon &m_daemon;
    std::optional<QStringList> m_names;
};

/// Something that carries a policy out, and how to look at it.
struct Carrier
{
    int type;
    QString name; ///< of the file or the service
    Finding (*look)(Surroundings &surroundings, const Carrier &carrier, bool value);
};

/// All of them; a policy can have several.
const QVector<Carrier> &carriers();

#endif
