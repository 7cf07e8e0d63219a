// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksstack.h"

#include "udisksnames.h"

#include <QDir>

#include <algorithm>

namespace UDisks {
namespace {

constexpr QLatin1String DeviceDirectory = latin1("/dev/");

/// The kernel writes a slash in the name of a device as an exclamation mark.
QString kernelName(const QString &device)
{
    return device.mid(DeviceDirectory.size()).replace(QLatin1Char('/'), QLatin1Char('!'));
}

QString deviceFile(QString kernelName)
{
    return DeviceDirectory + kernelName.replace(QLatin1Char('!'), QLatin1Char('/'));
}

} // namespace

QStringList devicesBelow(const QString &device)
{
    if (!device.startsWith(DeviceDirectory))
        return {};
    const QString directory = QStringLiteral("/sys/class/block/") + kernelName(device);
    // A partition is a directory in that of its device, which is the one that is built on others.
    for (const char *place : {"/slaves", "/../slaves"}) {
        const QDir slaves(directory + QLatin1String(place));
        QStringList names =
            slaves.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
        std::transform(names.begin(), names.end(), names.begin(), deviceFile);
        if (!names.isEmpty())
            return names;
    }
    return {};
}

QStringList foundations(const QString &top,
                        const std::function<QStringList(const QString &)> &below)
{
    QStringList seen{top};
    QStringList found;
    for (int i = 0; i < seen.size(); ++i) { // grows meanwhile
        const QStringList next = below(seen.at(i));
        if (next.isEmpty())
            found.append(seen.at(i));
        for (const QString &each : next) {
            if (!seen.contains(each))
                seen.append(each);
        }
    }
    return found.isEmpty() ? QStringList(top) : found;
}

} // namespace UDisks
