// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_DEVICE_H
#define GOVD_SIMULATOR_PROGRAM_DEVICE_H

#include "simulator/program/facts.h"
#include "simulator/program/markerfile.h"
#include "simulator/program/neighbours.h"
#include "simulator/program/storageports.h"

#include <optional>

namespace Simulator {

/// Something that happened on the device, with what it changed.
struct Happening
{
    QDateTime time;
    QString origin; ///< the word of the service that was called; "person" or "file"
    QString path; ///< of the object that was called, or of the file
    QString what; ///< the method or the order; empty for a file
    QVariantList arguments;
    QString errorName; ///< of the answer; empty when it is none
    QVector<Change> changes;
};

/// A whole device: all services, what is plugged in, and the marker file of the camera.
class Device : public QObject
{
    Q_OBJECT

public:
    Device();

    /// Lets all services appear. The name that cannot be taken, if one cannot.
    std::optional<QString> appear();

    Neighbours &neighbours() { return m_neighbours; }
    StoragePorts &ports() { return m_ports; }

    /// The service with this word, or null.
    Service *service(const QString &word);

    /// Lets go wrong what @p word says with all calls of a service. False when there is no such
    /// fault.
    bool setFault(Service &service, const QString &word, double seconds);

    static QStringList faultWords();

    /// All that can be seen of the device.
    QJsonObject state();

    /// Reports a call or an order, with all that has changed since the last report.
    void report(const QString &origin, const Call &call);

Q_SIGNALS:
    void changed();
    void happened(const Simulator::Happening &happening);

private:
    void onMarkerChanged();
    void emitHappening(Happening happening);
    QJsonArray services();
    QJsonArray storage() const;
    QJsonArray lastEvents() const;

    Neighbours m_neighbours;
    StoragePorts m_ports;
    MarkerFile m_camera;
    QHash<const Service *, QString> m_faults;
    Facts m_reported;
};

} // namespace Simulator

#endif
