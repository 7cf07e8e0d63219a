// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_LINEFILE_H
#define GOVD_TESTS_SUPPORT_LINEFILE_H

#include <QString>
#include <QStringList>

namespace Support {

/// The lines of a file that another process is writing, such as its standard error.
///
/// What the other process has written is there at once, without an event loop in between. A last
/// line without its end is not shown yet.
class LineFile
{
public:
    explicit LineFile(const QString &path);

    QString path() const;

    /// All lines written so far, but the first @p since ones.
    QStringList lines(int since = 0) const;

    /// The number of lines so far: what to give as @p since to see only later ones.
    int mark() const;

    /// Whether a line contains @p text, among those after the first @p since ones.
    bool contains(const QString &text, int since = 0) const;

    /// Waits for a line that contains @p text, among those after the first @p since ones.
    [[nodiscard]] bool waitForLine(const QString &text, int since = 0) const;

    /// Empties the file, for a writer that appends.
    void clear();

private:
    void read() const;

    QString m_path;
    mutable qint64 m_offset = 0; // of the end of the last whole line
    mutable QStringList m_lines;
};

} // namespace Support

#endif
