// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "udisksstack.h"

#include "udisksnames.h"

#include <QDir>
#include <QSet>

#include <algorithm>
#include <utility>

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

Foundations::Foundations(Below below)
    : m_below(std::move(below))
{
}

QStringList Foundations::of(const QString &top)
{
    QStringList walk{top};
    QSet<QString> seen{top};
    QStringList found;
    bool isChain = true;
    for (int i = 0; i < walk.size(); ++i) { // grows meanwhile
        const QString each = walk.at(i);
        const auto known = m_known.constFind(each);
        if (known != m_known.constEnd()) {
            found += *known;
            continue;
        }
        const QStringList below = m_below(each);
        if (below.isEmpty())
            found.append(each);
        isChain = isChain && below.size() < 2;
        for (const QString &next : below) {
            if (!seen.contains(next))
                walk.append(next);
            seen.insert(next);
        }
    }
    found.removeDuplicates();
    if (isChain) {
        for (const QString &each : std::as_const(walk))
            m_known.insert(each, found);
    }
    return found.isEmpty() ? QStringList(top) : found;
}

} // namespace UDisks
