// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_REMOTEDEVICE_H
#define GOVD_SIMULATOR_PROGRAM_REMOTEDEVICE_H

#include "simulator/program/verb.h"

#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QJsonObject>
#include <QObject>

#include <chrono>

namespace Simulator {

/// The device that runs on the bus, as another process sees and handles it.
class RemoteDevice : public QObject
{
    Q_OBJECT

public:
    /// Connects to the bus, if that is needed. That and all answers together have to come before
    /// @p timeout is over.
    explicit RemoteDevice(std::chrono::milliseconds timeout);

    /// All that can be seen of the device.
    Result<QJsonObject> state();

    /// Calls a method of the control object. The answer's values.
    Result<QVariantList> order(const QString &method, const QVariantList &arguments);

    /// From now on tells of changes. To be called before state(), so that none is missed.
    void follow();

    /// Why nothing more can be heard: the device has gone, or the bus has.
    Failure absence() const;

    /// The time that is left.
    QDeadlineTimer deadline() const { return m_deadline; }

Q_SIGNALS:
    void changed(const QJsonObject &state);
    void lost(); ///< the device or the bus has gone

private Q_SLOTS:
    void onPropertiesChanged(const QDBusMessage &message);

private:
    Result<QVariantList> call(const QString &interface, const QString &method,
                              const QVariantList &arguments);
    Failure failureOf(const QDBusMessage &reply) const;
    Failure noReply() const;

    const std::chrono::milliseconds m_timeout;
    QDeadlineTimer m_deadline;
    const Outcome m_busTrouble; // why there is no connection
};

} // namespace Simulator

#endif
