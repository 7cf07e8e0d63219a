// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINS_COMMON_STATEFILE_H
#define GOVD_PLUGINS_COMMON_STATEFILE_H

#include <QFileSystemWatcher>
#include <QObject>

#include <utility>

#include <sys/types.h>

/// The file of a plugin in /etc/govd, which is followed, and whose last good content outlives both
/// damage to the file and restarts of the daemon.
///
/// In force is what a good file holds. While the file is damaged or cannot be read, what it held
/// when it was last good stays in force. The same holds for a file that is not there, as after a
/// failed mount; only one that is removed while the daemon follows it counts for nothing. The last
/// good content is kept in /var/lib/govd/plugins, which only root may enter. Which of these holds,
/// and why, is told to the log when it changes, and to govctl with a file in /run/govd. Programs
/// other than the daemon write neither.
class StateFile : public QObject
{
    Q_OBJECT

public:
    /// Whether a content, which is never empty, can be put in force as a whole.
    using Check = bool (*)(const QByteArray &content);

    /// The device and the number of a directory.
    using DirectoryId = std::pair<dev_t, ino_t>;

    /// @p name is that of the plugin, and of its file but for the ending ".conf". Nothing is read
    /// before the first update(), except what was kept.
    StateFile(const QString &name, Check isSound);

    QString path() const;

    /// What is in force; empty when nothing is.
    QByteArray content() const { return m_content; }

    /// Whether the file itself is in force.
    bool isGood() const { return m_isGood; }

    /// Reads the file now. Edits that the system tells of are read without this.
    void update();

Q_SIGNALS:
    /// What is in force has changed.
    void changed();

private:
    void follow();
    void keep(const QByteArray &content);
    void tell(const QString &fault);
    bool store(const QString &path, const QByteArray &content, int mode) const;
    bool remove(const QString &path) const;

    QString m_name;
    Check m_isSound;
    bool m_isDaemon;
    QFileSystemWatcher m_watcher;
    QByteArray m_content;
    DirectoryId m_directory; ///< in which the file was seen last
    QString m_message;
    bool m_isGood = false;
    bool m_isKept = true;
    bool m_isBlind = false;
};

#endif
