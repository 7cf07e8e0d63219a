// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_MOUNT_H
#define GOVD_TESTS_SUPPORT_MOUNT_H

#include <QString>

namespace Support {

/// A file system over a directory, gone with this object: disks that are full or read-only.
class Mount
{
    Q_DISABLE_COPY(Mount)

public:
    ~Mount();

    /// An empty file system of @p size bytes over @p directory.
    static Mount small(const QString &directory, qint64 size);

    /// @p directory as it is, but nobody can write to it.
    static Mount readOnly(const QString &directory);

private:
    Mount(const QString &directory, const QStringList &arguments);

    QString m_directory;
};

} // namespace Support

#endif
