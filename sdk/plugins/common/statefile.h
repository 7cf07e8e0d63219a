// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINS_COMMON_STATEFILE_H
#define GOVD_PLUGINS_COMMON_STATEFILE_H

#include <QFileSystemWatcher>
#include <QObject>

#include <utility>

#include <sys/types.h>

/// A plugin's configuration file in /etc/govd: watched for edits, with its last good content kept
/// over damage to the file and restarts of the daemon.
///
/// While the file is good, its content is in force. While it is damaged or cannot be read, its last
/// good content is. The same holds for a missing file, as after a failed mount; only when it is
/// removed while the daemon watches it, nothing is in force. The last good content is kept in
/// /var/lib/govd/plugins, which only root may enter. Changes of the state are logged, and a file in
/// /run/govd holds it for govctl. In a process other than the daemon, the class writes no files.
class StateFile : public QObject
{
    Q_OBJECT

public:
    /// Whether @p content, which is never empty, has no fault.
    using Check = bool (*)(const QByteArray &content);

    /// Device and inode number of a directory.
    using DirectoryId = std::pair<dev_t, ino_t>;

    /// @p name is the plugin's, and the file's without ".conf". Reads the last good content; the
    /// file itself is first read by update().
    StateFile(const QString &name, Check isSound);

    QString path() const;

    /// The content in force; empty when nothing is.
    QByteArray content() const { return m_content; }

    /// Whether the content in force is that of the file as it is now.
    bool isGood() const { return m_isGood; }

    /// Reads the file now. Also called for each edit that the file system reports.
    void update();

Q_SIGNALS:
    /// The content in force has changed.
    void changed();

private:
    void watch();
    void keep(const QByteArray &content);
    void report(const QString &fault);
    bool store(const QString &path, const QByteArray &content, int mode) const;
    bool remove(const QString &path) const;

    QString m_name;
    Check m_isSound;
    bool m_isDaemon;
    QFileSystemWatcher m_watcher;
    QByteArray m_content;
    DirectoryId m_directory; ///< the one in which the file was last seen
    QString m_message;
    bool m_isGood = false;
    bool m_isKept = true;
    bool m_hasWatchFailed = false;
};

#endif
