// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/objecttree.h"

#include "simulator/introspection.h"

#include <QDBusMetaType>
#include <QDBusVariant>

#include <algorithm>

namespace Simulator {
namespace {

const QLatin1String PropertiesInterface("org.freedesktop.DBus.Properties");

Reply unknown(const char *what, const QString &name)
{
    return Reply::failure(QStringLiteral("org.freedesktop.DBus.Error.Unknown")
                              + QLatin1String(what),
                          QStringLiteral("There is no ") + name);
}

template <typename Row> const Row *findRow(const QVector<Row> &rows, const QString &name)
{
    const auto isNamed = [&](const Row &row) {
        return row.name == name;
    };
    const auto found = std::find_if(rows.begin(), rows.end(), isNamed);
    return found == rows.end() ? nullptr : &*found;
}

QString typeOf(const QVariant &value)
{
    return QLatin1String(QDBusMetaType::typeToSignature(value.userType()));
}

} // namespace

ObjectTree::ObjectTree()
{
    qDBusRegisterMetaType<InterfaceValues>();
    qDBusRegisterMetaType<ObjectValues>();
}

void ObjectTree::add(const QString &path, const Interface &interface)
{
    remove(path, interface.name);
    m_objects[path].append(interface);
}

void ObjectTree::remove(const QString &path)
{
    m_objects.remove(path);
}

void ObjectTree::remove(const QString &path, const QString &interface)
{
    QVector<Interface> &interfaces = m_objects[path];
    const auto isNamed = [&](const Interface &row) {
        return row.name == interface;
    };
    interfaces.erase(std::remove_if(interfaces.begin(), interfaces.end(), isNamed),
                     interfaces.end());
    if (interfaces.isEmpty())
        m_objects.remove(path);
}

Reply ObjectTree::run(const Call &call) const
{
    if (!m_objects.contains(call.path))
        return unknown("Object", call.path);
    bool isInterfaceKnown = false;
    for (const Interface &interface : withStandard(call.path)) {
        if (!call.interface.isEmpty() && interface.name != call.interface)
            continue;
        isInterfaceKnown = true;
        const Method *method = findRow(interface.methods, call.member);
        if (!method)
            continue;
        if (method->in != call.signature)
            return Reply::invalidArguments(call.member + QStringLiteral(" takes ") + method->in);
        return method->run(call);
    }
    return isInterfaceKnown ? unknown("Method", call.member) : unknown("Interface", call.interface);
}

QString ObjectTree::describe(const QString &path) const
{
    const auto interfaces = m_objects.contains(path) ? withStandard(path) : QVector<Interface>();
    return describeObject(interfaces, children(path));
}

QVariantMap ObjectTree::values(const QString &path, const QString &interface) const
{
    QVariantMap values;
    const QVector<Interface> interfaces = m_objects.value(path);
    if (const Interface *found = findRow(interfaces, interface)) {
        for (const Property &property : found->properties)
            values.insert(property.name, property.read());
    }
    return values;
}

InterfaceValues ObjectTree::values(const QString &path) const
{
    InterfaceValues all;
    for (const Interface &interface : m_objects.value(path))
        all.insert(interface.name, values(path, interface.name));
    return all;
}

Interface ObjectTree::objectManager() const
{
    const QString added = QStringLiteral("oa{sa{sv}}");
    const auto list = [this](const Call &call) {
        ObjectValues objects;
        for (auto it = m_objects.begin(); it != m_objects.end(); ++it) {
            if (it.key() != call.path)
                objects.insert(QDBusObjectPath(it.key()), values(it.key()));
        }
        return Reply::of({QVariant::fromValue(objects)});
    };
    return {QStringLiteral("org.freedesktop.DBus.ObjectManager"),
            {{QStringLiteral("GetManagedObjects"), {}, QStringLiteral("a{oa{sa{sv}}}"), list}},
            {},
            {{QStringLiteral("InterfacesAdded"), added},
             {QStringLiteral("InterfacesRemoved"), QStringLiteral("oas")}}};
}

QVector<Interface> ObjectTree::withStandard(const QString &path) const
{
    return m_objects.value(path) + QVector<Interface>{propertiesOf(path)};
}

Interface ObjectTree::propertiesOf(const QString &path) const
{
    return {PropertiesInterface,
            {{QStringLiteral("Get"), QStringLiteral("ss"), QStringLiteral("v"),
              [=](const Call &call) {
                  return get(path, call);
              }},
             {QStringLiteral("GetAll"), QStringLiteral("s"), QStringLiteral("a{sv}"),
              [=](const Call &call) {
                  return getAll(path, call);
              }},
             {QStringLiteral("Set"),
              QStringLiteral("ssv"),
              {},
              [=](const Call &call) {
                  return set(path, call);
              }}},
            {},
            {{QStringLiteral("PropertiesChanged"), QStringLiteral("sa{sv}as")}}};
}

const Property *ObjectTree::findProperty(const QString &path, const Call &call) const
{
    const auto object = m_objects.constFind(path);
    const Interface *interface = findRow(*object, call.arguments.at(0).toString());
    return interface ? findRow(interface->properties, call.arguments.at(1).toString()) : nullptr;
}

Reply ObjectTree::get(const QString &path, const Call &call) const
{
    const Property *property = findProperty(path, call);
    if (!property)
        return unknown("Property", call.arguments.at(1).toString());
    return Reply::of({QVariant::fromValue(QDBusVariant(property->read()))});
}

Reply ObjectTree::getAll(const QString &path, const Call &call) const
{
    const QString name = call.arguments.at(0).toString();
    if (!findRow(m_objects.value(path), name))
        return unknown("Interface", name);
    return Reply::of({values(path, name)});
}

Reply ObjectTree::set(const QString &path, const Call &call) const
{
    const Property *property = findProperty(path, call);
    if (!property)
        return unknown("Property", call.arguments.at(1).toString());
    if (!property->write)
        return Reply::failure(QStringLiteral("org.freedesktop.DBus.Error.PropertyReadOnly"),
                              property->name + QStringLiteral(" is read-only"));
    const QVariant &value = call.arguments.at(2);
    if (typeOf(value) != property->type)
        return Reply::invalidArguments(property->name + QStringLiteral(" is of another type"));
    return property->write(value);
}

QStringList ObjectTree::children(const QString &path) const
{
    const QString prefix = path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
    QStringList names;
    for (auto it = m_objects.begin(); it != m_objects.end(); ++it) {
        const QString name = it.key().mid(prefix.size()).section(QLatin1Char('/'), 0, 0);
        if (it.key().startsWith(prefix) && !name.isEmpty() && !names.contains(name))
            names.append(name);
    }
    return names;
}

} // namespace Simulator
