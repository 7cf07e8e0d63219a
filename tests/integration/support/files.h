// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_FILES_H
#define GOVD_TESTS_SUPPORT_FILES_H

#include <QByteArray>
#include <QMap>
#include <QString>

#include <sys/types.h>

namespace Support {

/// What a file is at one moment. Two snapshots are equal when nobody wrote the file in between,
/// not even the same content.
struct FileSnapshot
{
    bool exists = false;
    QByteArray content;
    ino_t inode = 0;
    qint64 changed = 0; ///< nanoseconds since the epoch

    bool operator==(const FileSnapshot &other) const;
    bool operator!=(const FileSnapshot &other) const;
};

/// The files that the daemon reads and writes.
namespace Files {

/// As on a fresh installation: /etc/policy empty, no state of the daemon or its neighbours.
void reset();

/// Writes @p content to @p path, and makes the directories that lead there.
void write(const QString &path, const QByteArray &content);

/// Puts a file with @p content in the place of @p path in one step, as editors do it.
void replace(const QString &path, const QByteArray &content);

/// The content of a file; empty when there is none.
QByteArray read(const QString &path);

/// The keys of the group "policy" of a key file with their values as text. Reads "key=value"
/// lines only, and shares no code with the daemon.
QMap<QString, QString> values(const QString &path);

FileSnapshot snapshot(const QString &path);

} // namespace Files

} // namespace Support

#endif
