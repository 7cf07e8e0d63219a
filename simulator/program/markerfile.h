// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_MARKERFILE_H
#define GOVD_SIMULATOR_PROGRAM_MARKERFILE_H

#include <QFileSystemWatcher>

namespace Simulator {

/// Notices when a file comes and goes, even when its directory does not exist yet.
class MarkerFile : public QObject
{
    Q_OBJECT

public:
    explicit MarkerFile(const QString &path);

    QString path() const { return m_path; }
    bool isThere() const { return m_isThere; }

Q_SIGNALS:
    void changed();

private:
    void look();

    const QString m_path;
    bool m_isThere = false;
    QFileSystemWatcher m_watcher;
};

} // namespace Simulator

#endif
