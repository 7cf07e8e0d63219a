// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/markerfile.h"

#include <QFileInfo>

namespace Simulator {
namespace {

/// The directories that lead to @p path, as far as they exist.
QStringList directoriesTo(const QString &path)
{
    QStringList directories;
    QString directory = path;
    do {
        directory = QFileInfo(directory).path();
        if (QFileInfo(directory).isDir())
            directories.append(directory);
    } while (directory != QLatin1String("/"));
    return directories;
}

} // namespace

MarkerFile::MarkerFile(const QString &path)
    : m_path(path)
{
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &MarkerFile::look);
    look();
}

/// Watches before it looks, so that nothing is missed in between.
void MarkerFile::look()
{
    m_watcher.addPaths(directoriesTo(m_path));
    const bool isThere = QFileInfo::exists(m_path);
    if (isThere == m_isThere)
        return;
    m_isThere = isThere;
    Q_EMIT changed();
}

} // namespace Simulator
