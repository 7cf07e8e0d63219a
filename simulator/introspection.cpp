// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/introspection.h"

#include <QXmlStreamWriter>

namespace Simulator {
namespace {

void writeNamed(QXmlStreamWriter &xml, const char *element, const QString &name)
{
    xml.writeStartElement(QLatin1String(element));
    xml.writeAttribute(QStringLiteral("name"), name);
}

void writeArguments(QXmlStreamWriter &xml, const QString &types, const char *direction)
{
    for (const QString &type : completeTypes(types)) {
        xml.writeEmptyElement(QStringLiteral("arg"));
        xml.writeAttribute(QStringLiteral("type"), type);
        if (direction)
            xml.writeAttribute(QStringLiteral("direction"), QLatin1String(direction));
    }
}

void writeInterface(QXmlStreamWriter &xml, const Interface &interface)
{
    writeNamed(xml, "interface", interface.name);
    for (const Method &method : interface.methods) {
        writeNamed(xml, "method", method.name);
        writeArguments(xml, method.in, "in");
        writeArguments(xml, method.out, "out");
        xml.writeEndElement();
    }
    for (const Signal &signal : interface.signalRows) {
        writeNamed(xml, "signal", signal.name);
        writeArguments(xml, signal.types, nullptr);
        xml.writeEndElement();
    }
    for (const Property &property : interface.properties) {
        writeNamed(xml, "property", property.name);
        xml.writeAttribute(QStringLiteral("type"), property.type);
        xml.writeAttribute(QStringLiteral("access"),
                           QLatin1String(property.write ? "readwrite" : "read"));
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

/// Length of the complete type at the beginning of @p types.
int typeLength(const QStringRef &types)
{
    if (types.startsWith(QLatin1Char('a')))
        return 1 + typeLength(types.mid(1));
    int depth = 0;
    for (int i = 0; i < types.size(); ++i) {
        if (types.at(i) == QLatin1Char('(') || types.at(i) == QLatin1Char('{'))
            ++depth;
        else if (types.at(i) == QLatin1Char(')') || types.at(i) == QLatin1Char('}'))
            --depth;
        if (depth == 0)
            return i + 1;
    }
    return types.size();
}

} // namespace

QString describeObject(const QVector<Interface> &interfaces, const QStringList &children)
{
    QString text;
    QXmlStreamWriter xml(&text);
    xml.writeDTD(QStringLiteral(
        "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\" "
        "\"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">"));
    xml.writeStartElement(QStringLiteral("node"));
    for (const Interface &interface : interfaces)
        writeInterface(xml, interface);
    for (const QString &child : children) {
        writeNamed(xml, "node", child);
        xml.writeEndElement();
    }
    xml.writeEndElement();
    return text;
}

QStringList completeTypes(const QString &signature)
{
    QStringList types;
    for (int at = 0; at < signature.size(); at += types.last().size())
        types.append(signature.mid(at, typeLength(signature.midRef(at))));
    return types;
}

} // namespace Simulator
