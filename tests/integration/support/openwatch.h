// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_OPENWATCH_H
#define GOVD_TESTS_SUPPORT_OPENWATCH_H

#include <QString>

namespace Support {

/// Notices whether anybody opens a file or a directory that exists now.
class OpenWatch
{
    Q_DISABLE_COPY(OpenWatch)

public:
    explicit OpenWatch(const QString &path);
    ~OpenWatch();

    /// How often it was opened so far.
    int opened() const;

private:
    int m_descriptor;
    mutable int m_opened = 0;
};

} // namespace Support

#endif
