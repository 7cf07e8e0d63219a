// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <sys/stat.h>

namespace Support {

bool FileSnapshot::operator==(const FileSnapshot &other) const
{
    return exists == other.exists && content == other.content && inode == other.inode
        && changed == other.changed;
}

bool FileSnapshot::operator!=(const FileSnapshot &other) const
{
    return !(*this == other);
}

namespace Files {

void reset()
{
    for (const char *path : {"/etc/policy", "/var/lib/govd", "/var/lib/devel-su", "/run/govd"}) {
        const QString directory = QString::fromLatin1(path);
        if (!QFileInfo(directory).isDir() || QFileInfo(directory).isSymLink())
            QFile::remove(directory);
        if (!QDir(directory).removeRecursively())
            qFatal("Cannot remove %s", path);
    }
    QDir().mkpath(QStringLiteral("/etc/policy"));
}

void write(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.flush())
        qFatal("Cannot write %s", qPrintable(path));
}

void replace(const QString &path, const QByteArray &content)
{
    const QString draft = path + QStringLiteral(".draft");
    write(draft, content);
    if (std::rename(qPrintable(draft), qPrintable(path)) != 0)
        qFatal("Cannot replace %s", qPrintable(path));
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QMap<QString, QString> values(const QString &path)
{
    QMap<QString, QString> found;
    bool inGroup = false;
    const QStringList lines = QString::fromUtf8(read(path)).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const int separator = line.indexOf(QLatin1Char('='));
        if (line.startsWith(QLatin1Char('[')))
            inGroup = line == QLatin1String("[policy]");
        else if (inGroup && separator > 0)
            found.insert(line.left(separator), line.mid(separator + 1));
    }
    return found;
}

FileSnapshot snapshot(const QString &path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    const qint64 changed = status.st_mtim.tv_sec * Q_INT64_C(1000000000) + status.st_mtim.tv_nsec;
    return {true, read(path), status.st_ino, changed};
}

} // namespace Files

} // namespace Support
