// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "replyvalue.h"

#include <QDBusArgument>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QVariant>

namespace {

bool holdsDescriptor(const QVariant &value);

// QDBusArgument frees the message only when each container that was begun has been ended, so every
// container is read to its end, also after a descriptor has been found.

bool restHoldsDescriptor(const QDBusArgument &container)
{
    bool found = false;
    while (!container.atEnd())
        found |= holdsDescriptor(container.asVariant());
    return found;
}

bool mapHoldsDescriptor(const QDBusArgument &map)
{
    bool found = false;
    map.beginMap();
    while (!map.atEnd()) {
        map.beginMapEntry();
        found |= restHoldsDescriptor(map);
        map.endMapEntry();
    }
    map.endMap();
    return found;
}

bool arrayHoldsDescriptor(const QDBusArgument &array)
{
    array.beginArray();
    const bool found = restHoldsDescriptor(array);
    array.endArray();
    return found;
}

bool structureHoldsDescriptor(const QDBusArgument &structure)
{
    structure.beginStructure();
    const bool found = restHoldsDescriptor(structure);
    structure.endStructure();
    return found;
}

bool containerHoldsDescriptor(const QDBusArgument &container)
{
    switch (container.currentType()) {
    case QDBusArgument::ArrayType:
        return arrayHoldsDescriptor(container);
    case QDBusArgument::StructureType:
        return structureHoldsDescriptor(container);
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
    // A copy has a read position of its own, so that of @p value does not move.
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
