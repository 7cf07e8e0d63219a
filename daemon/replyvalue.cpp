// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "daemon/replyvalue.h"

#include <QDBusArgument>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QVariant>

namespace {

bool holdsDescriptor(const QVariant &value);

/// Looks at what @p container has left, the elements of an array, structure or map entry.
bool elementsHoldDescriptor(const QDBusArgument &container)
{
    while (!container.atEnd()) {
        if (holdsDescriptor(container.asVariant()))
            return true;
    }
    return false;
}

bool mapHoldsDescriptor(const QDBusArgument &map)
{
    map.beginMap();
    while (!map.atEnd()) {
        map.beginMapEntry();
        if (elementsHoldDescriptor(map))
            return true;
        map.endMapEntry();
    }
    return false;
}

bool containerHoldsDescriptor(const QDBusArgument &container)
{
    switch (container.currentType()) {
    case QDBusArgument::ArrayType:
        container.beginArray();
        return elementsHoldDescriptor(container);
    case QDBusArgument::StructureType:
        container.beginStructure();
        return elementsHoldDescriptor(container);
    case QDBusArgument::MapType:
        return mapHoldsDescriptor(container);
    case QDBusArgument::BasicType:
    case QDBusArgument::VariantType:
    case QDBusArgument::MapEntryType:
    case QDBusArgument::UnknownType:
        break;
    }
    return false;
}

bool holdsDescriptor(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return holdsDescriptor(value.value<QDBusVariant>().variant());
    // A copy, which has a place of its own in the message: reading moves it.
    if (value.userType() == qMetaTypeId<QDBusArgument>())
        return containerHoldsDescriptor(value.value<QDBusArgument>());
    return value.userType() == qMetaTypeId<QDBusUnixFileDescriptor>();
}

bool isEmptySignature(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return isEmptySignature(value.value<QDBusVariant>().variant());
    return value.userType() == qMetaTypeId<QDBusSignature>()
        && value.value<QDBusSignature>().signature().isEmpty();
}

} // namespace

bool canBeGivenBack(const QVariant &value)
{
    return !isEmptySignature(value) && !holdsDescriptor(value);
}
