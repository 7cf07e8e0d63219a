// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSNAMES_H
#define SYSTEMSETTINGS_UDISKSNAMES_H

#include <QLatin1String>

#include <cstddef>

/// Every name by which the storage service and its parts are known on the bus.
namespace UDisks {

/// Makes a constant of @p text, whatever the compiler: QLatin1String's own constructor from a
/// literal is one at compile time with some compilers only.
template <std::size_t size> constexpr QLatin1String latin1(const char (&text)[size]) noexcept
{
    return QLatin1String(text, static_cast<int>(size) - 1);
}

constexpr QLatin1String Service = latin1("org.freedesktop.UDisks2");
constexpr QLatin1String RootPath = latin1("/org/freedesktop/UDisks2");

constexpr QLatin1String Block = latin1("org.freedesktop.UDisks2.Block");
constexpr QLatin1String Drive = latin1("org.freedesktop.UDisks2.Drive");
constexpr QLatin1String Filesystem = latin1("org.freedesktop.UDisks2.Filesystem");
constexpr QLatin1String PartitionTable = latin1("org.freedesktop.UDisks2.PartitionTable");

constexpr QLatin1String BusService = latin1("org.freedesktop.DBus");
constexpr QLatin1String BusPath = latin1("/org/freedesktop/DBus");
constexpr QLatin1String NameHasNoOwner = latin1("org.freedesktop.DBus.Error.NameHasNoOwner");
constexpr QLatin1String ObjectManager = latin1("org.freedesktop.DBus.ObjectManager");
constexpr QLatin1String Properties = latin1("org.freedesktop.DBus.Properties");

/// What a block device names as its drive, or as the device that it decrypts, when it has none.
constexpr QLatin1String NoObject = latin1("/");

} // namespace UDisks

#endif
