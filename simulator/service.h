// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_SERVICE_H
#define GOVD_SIMULATOR_SERVICE_H

#include "simulator/fault.h"
#include "simulator/objecttree.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>

namespace Simulator {

/// A neighbour service of the device, in memory, on the system bus.
///
/// Each service has a bus connection of its own while it is present, and so a unique name of its
/// own, a new one each time it comes. It answers calls in the thread in which it lives, so a
/// caller that blocks must live in another one; see ServiceThread. A class of its own for each
/// service describes its objects and holds its state, which outlives an absence.
class Service : public QDBusVirtualObject
{
    Q_OBJECT

public:
    ~Service() override;

    /// The well-known name on the bus.
    QString name() const { return m_name; }

    /// Connects to the system bus and takes the name. False when one of them fails.
    bool appear();

    /// Drops the bus connection, as a process does that ends. Calls in hand stay unanswered.
    void leave();

    bool isPresent() const { return !m_connectionName.isEmpty(); }

    /// What shall happen to all calls until it is changed; introspection is always answered.
    void setFault(const Fault &fault) { m_fault = fault; }

    /// What shall happen to calls of the method @p member; goes before the fault for all.
    void setFault(const QString &member, const Fault &fault) { m_memberFaults[member] = fault; }

    void clearFaults();

    /// The calls so far, oldest first, but for introspection.
    QVector<Call> calls() const { return m_calls; }
    QVector<Call> calls(const QString &member) const;
    void forgetCalls() { m_calls.clear(); }

    /// Sends a signal, right or wrong. Does nothing while absent.
    void sendSignal(const QString &path, const QString &interface, const QString &member,
                    const QVariantList &arguments);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

Q_SIGNALS:
    /// A call has come and, unless a fault prevents it, has been carried out.
    void called(const Simulator::Call &call);

    /// The state that this service holds is another one than before.
    void changed();

    void presenceChanged(bool isPresent);

protected:
    explicit Service(const QString &name);

    ObjectTree &objects() { return m_objects; }
    const ObjectTree &objects() const { return m_objects; }

    /// Tells the bus that a property has taken a new value.
    void sendPropertyChanged(const QString &path, const QString &interface,
                             const QString &property);

    /// Tells the bus that a property has a new value, but not which.
    void sendPropertyInvalidated(const QString &path, const QString &interface,
                                 const QString &property);

private:
    Fault faultOf(const Call &call) const;
    Reply carryOut(const Call &call, const Fault &fault) const;
    void answer(const QDBusMessage &message, const Reply &reply, int delay);

    const QString m_name;
    QString m_connectionName; ///< empty while absent
    ObjectTree m_objects;
    QVector<Call> m_calls;
    Fault m_fault;
    QHash<QString, Fault> m_memberFaults;
};

} // namespace Simulator

#endif
