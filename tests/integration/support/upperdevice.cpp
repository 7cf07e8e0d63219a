// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/upperdevice.h"

#include <QFile>

namespace Support {

namespace {

constexpr qint64 Size = 64 * 1024;

} // namespace

UpperDevice::UpperDevice(const BlockDevice *lower)
    : LoopDevice(lower->node())
{
    if (!failure().isEmpty())
        return;
    const QString directory = QStringLiteral("/sys/class/block/%1/slaves").arg(name());
    m_lowerDevices.reset(new Mount(Mount::small(directory, Size)));
    if (!QFile::link(QStringLiteral("../../") + lower->name(),
                     directory + QLatin1Char('/') + lower->name()))
        qFatal("Cannot make a link in %s", qPrintable(directory));
}

} // namespace Support
