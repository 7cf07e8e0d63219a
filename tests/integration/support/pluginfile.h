// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_PLUGINFILE_H
#define GOVD_TESTS_SUPPORT_PLUGINFILE_H

#include <QString>

namespace Support {

/// A file in the directory of lock plugins. Removed with this object.
class PluginFile
{
    Q_DISABLE_COPY(PluginFile)

public:
    /// The lock plugin @p plugin ("child" or "unresolved") under the name @p file.
    PluginFile(const QString &plugin, const QString &file);

    /// The same, but only the first @p size bytes of it.
    PluginFile(const QString &plugin, const QString &file, int size);

    ~PluginFile();

    QString path() const { return m_path; }

private:
    QString m_path;
};

} // namespace Support

#endif
