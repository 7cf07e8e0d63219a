// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BLOCKEDSYSTEMLOG_H
#define GOVD_TESTS_SUPPORT_BLOCKEDSYSTEMLOG_H

#include <QByteArray>

namespace Support {

/// The system log at /dev/log, full to the brim and read by nobody: whoever writes to it stands
/// still in the middle of what it does, where a test can look around.
class BlockedSystemLog
{
    Q_DISABLE_COPY(BlockedSystemLog)

public:
    BlockedSystemLog();
    ~BlockedSystemLog();

    /// Waits until the main thread of @p process stands still in a write to the log.
    [[nodiscard]] bool waitForWriter(qint64 process) const;

    /// Reads until the line of a writer is there, which lets the writer go on. Returns the line.
    QByteArray take();

private:
    int m_socket;
    int m_filler;
};

} // namespace Support

#endif
