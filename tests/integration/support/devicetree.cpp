// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/devicetree.h"

#include <QDir>
#include <QFile>

namespace Support {

namespace {

const QString Directory = QStringLiteral("/sys/class/block");
constexpr qint64 Size = 1024 * 1024;

void makeDirectory(const QString &path)
{
    if (!QDir().mkpath(path))
        qFatal("Cannot make %s", qPrintable(path));
}

void makeLink(const QString &target, const QString &path)
{
    if (!QFile::link(target, path))
        qFatal("Cannot make %s", qPrintable(path));
}

} // namespace

DeviceTree::DeviceTree()
    : m_mount(Mount::small(Directory, Size))
{
}

void DeviceTree::add(const QString &name, const QStringList &below) const
{
    const QString slaves = Directory + QLatin1Char('/') + name + QStringLiteral("/slaves/");
    makeDirectory(slaves);
    for (const QString &device : below)
        makeLink(QStringLiteral("../../") + device, slaves + device);
}

void DeviceTree::addPartition(const QString &name, const QString &whole) const
{
    makeDirectory(Directory + QLatin1Char('/') + whole + QLatin1Char('/') + name);
    makeLink(whole + QLatin1Char('/') + name, Directory + QLatin1Char('/') + name);
}

} // namespace Support
