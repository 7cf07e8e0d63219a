// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/mount.h"

#include <QProcess>
#include <QStringList>

#include <sys/mount.h>

namespace Support {

Mount Mount::small(const QString &directory, qint64 size)
{
    return Mount(directory,
                 {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
                  QStringLiteral("mode=755,size=%1").arg(size), QStringLiteral("small")});
}

Mount Mount::readOnly(const QString &directory)
{
    return Mount(directory, {QStringLiteral("-o"), QStringLiteral("bind,ro"), directory});
}

Mount::Mount(const QString &directory, const QStringList &arguments)
    : m_directory(directory)
{
    if (QProcess::execute(QStringLiteral("mount"), arguments + QStringList(directory)) != 0)
        qFatal("Cannot mount over %s", qPrintable(directory));
}

Mount::~Mount()
{
    umount2(qPrintable(m_directory), MNT_DETACH);
}

} // namespace Support
