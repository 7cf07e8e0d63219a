// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_NETWORKTECHNOLOGY_H
#define GOVD_SIMULATOR_NETWORKTECHNOLOGY_H

#include "simulator/service.h"

namespace Simulator {

/// The Wi-Fi technology of the network service, with its sharing of the connection (tethering).
class NetworkTechnology : public Service
{
    Q_OBJECT

public:
    NetworkTechnology();

    bool isTethering() const { return m_properties.value(QStringLiteral("Tethering")).toBool(); }

    /// Switches tethering, as the person who holds the device would.
    void setTethering(bool isTethering);

private:
    Reply change(const QString &property, const QVariant &value);

    QVariantMap m_properties;
};

} // namespace Simulator

#endif
