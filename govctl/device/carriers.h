// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_CARRIERS_H
#define GOVCTL_CARRIERS_H

#include "evidence.h"
#include "names.h"

#include <QDBusMessage>

#include <systemsettings/partition.h>

/// The state of the services that the daemon calls, where it can be read. Reads each at most once.
class Surroundings
{
public:
    explicit Surroundings(Daemon &daemon)
        : m_daemon(daemon)
    {
    }

    /// Whether the bus tells that nobody owns the name @p service.
    bool isAbsent(const QString &service);

    /// A property of the USB manager, or of the Wi-Fi technology; empty when it cannot be read.
    std::optional<bool> usbEnabled();
    std::optional<bool> tethering();

    /// The mount points of removable storage on the bus that the policy @p type governs; empty when
    /// the storage service does not list what there is.
    std::optional<QStringList> mounts(int type);

private:
    std::optional<QVector<Partition>> listPartitions() const;

    Daemon &m_daemon;
    std::optional<QDBusMessage> m_names;
    std::optional<std::optional<QVector<Partition>>> m_partitions;
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

/// The services of the carriers of the policy @p type that are not on the bus.
QStringList absentServices(Surroundings &surroundings, int type);

#endif
