// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksproperties.h"

#include "udisksnames.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QFile>

#include <algorithm>

namespace UDisks {
namespace {

/// Turns a received value into a plain one; an invalid one when the type is not the right one.
using Reader = QVariant (*)(const QVariant &received);

template <QMetaType::Type type> QVariant readPlain(const QVariant &received)
{
    return received.userType() == type ? received : QVariant();
}

QVariant readObjectPath(const QVariant &received)
{
    if (received.userType() != qMetaTypeId<QDBusObjectPath>())
        return {};
    return received.value<QDBusObjectPath>().path();
}

/// The service sends names of files as bytes with the NUL of a C string at their end. Qt 6 would
/// decode it, too.
QString decodedName(const QByteArray &bytes)
{
    return QFile::decodeName(bytes.constData());
}

QVariant readFileName(const QVariant &received)
{
    if (received.userType() != QMetaType::QByteArray)
        return {};
    return decodedName(received.toByteArray());
}

QVariant readFileNames(const QVariant &received)
{
    // Reading an argument as something that it is not aborts or warns: ask for the type first.
    const auto argument = received.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("aay"))
        return {};
    const auto encoded = qdbus_cast<QList<QByteArray>>(argument);
    QStringList names;
    for (const QByteArray &bytes : encoded)
        names.append(decodedName(bytes));
    return names;
}

struct Property
{
    QLatin1String interface;
    QLatin1String name;
    Reader read;
};

constexpr Property wantedProperties[] = {
    {Block, latin1("Device"), readFileName},
    {Block, latin1("Drive"), readObjectPath},
    {Block, latin1("HintSystem"), readPlain<QMetaType::Bool>},
    {Block, latin1("CryptoBackingDevice"), readObjectPath},
    {Filesystem, latin1("MountPoints"), readFileNames},
    {Drive, latin1("ConnectionBus"), readPlain<QMetaType::QString>},
    {Drive, latin1("Vendor"), readPlain<QMetaType::QString>},
    {Drive, latin1("Model"), readPlain<QMetaType::QString>},
    {Drive, latin1("Removable"), readPlain<QMetaType::Bool>},
};

} // namespace

bool isWanted(const QString &name)
{
    return name == Block || name == Drive || name == Filesystem || name == PartitionTable;
}

bool isWanted(const QString &interface, const QString &name)
{
    return std::any_of(std::begin(wantedProperties), std::end(wantedProperties),
                       [&](const Property &property) {
                           return property.interface == interface && property.name == name;
                       });
}

QVariantMap readProperties(const QString &interface, const QVariantMap &received)
{
    QVariantMap properties;
    for (const Property &property : wantedProperties) {
        if (property.interface != interface)
            continue;
        const QVariant value = property.read(received.value(property.name));
        if (value.isValid())
            properties.insert(property.name, value);
    }
    return properties;
}

} // namespace UDisks
