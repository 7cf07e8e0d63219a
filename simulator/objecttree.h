// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_OBJECTTREE_H
#define GOVD_SIMULATOR_OBJECTTREE_H

#include "simulator/interface.h"

#include <QDBusObjectPath>
#include <QMap>

namespace Simulator {

/// The interfaces of an object, by name, with the values of their properties: a{sa{sv}}.
using InterfaceValues = QMap<QString, QVariantMap>;
/// The objects of a service, by path: a{oa{sa{sv}}}.
using ObjectValues = QMap<QDBusObjectPath, InterfaceValues>;

/// The objects of one service: finds the row that a call is meant for, checks the types of its
/// arguments and runs it. Each object gets the standard interface of properties by itself.
class ObjectTree
{
public:
    ObjectTree();

    void add(const QString &path, const Interface &interface);
    void remove(const QString &path);
    void remove(const QString &path, const QString &interface);

    Reply run(const Call &call) const;

    /// Describes the object at @p path in XML; one without interfaces when it only leads to
    /// others.
    QString describe(const QString &path) const;

    /// Returns the properties of one interface with their present values.
    QVariantMap values(const QString &path, const QString &interface) const;

    /// Returns all that the object at @p path shows, without the standard interfaces.
    InterfaceValues values(const QString &path) const;

    /// Returns the interface by which a service lists all objects below its own.
    Interface objectManager() const;

private:
    QVector<Interface> withStandard(const QString &path) const;
    Interface propertiesOf(const QString &path) const;
    const Property *findProperty(const QString &path, const Call &call) const;
    Reply get(const QString &path, const Call &call) const;
    Reply getAll(const QString &path, const Call &call) const;
    Reply set(const QString &path, const Call &call) const;
    QStringList children(const QString &path) const;

    QMap<QString, QVector<Interface>> m_objects;
};

} // namespace Simulator

Q_DECLARE_METATYPE(Simulator::InterfaceValues)
Q_DECLARE_METATYPE(Simulator::ObjectValues)

#endif
