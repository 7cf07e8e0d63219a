// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_SYSTEMLOG_H
#define GOVD_TESTS_SUPPORT_SYSTEMLOG_H

#include <QString>
#include <QVector>

#include <mutex>
#include <thread>

namespace Support {

/// One line that a program has handed to syslog().
struct SystemLogLine
{
    int priority = -1; ///< facility and level in one number, as sent
    QString program;
    QString text;
};

/// The system log: listens at /dev/log while it exists.
///
/// Reads in a thread of its own, because a log that nobody reads holds up whoever writes to it.
class SystemLog
{
    Q_DISABLE_COPY(SystemLog)

public:
    SystemLog();
    ~SystemLog();

    /// Waits until every line is here that has been sent by now.
    void settle() const;

    /// The lines so far, but the first @p since ones.
    QVector<SystemLogLine> lines(int since = 0) const;

    /// The number of lines that have been sent by now.
    int mark() const;

    /// Waits for a line that holds @p text, among those after the first @p since ones.
    [[nodiscard]] bool waitForLine(const QString &text, int since = 0) const;

private:
    void read();
    void take(const QByteArray &datagram);

    int m_socket = -1;
    int m_end = -1; // becomes readable when the thread is to end
    mutable std::mutex m_mutex;
    QVector<SystemLogLine> m_lines;
    int m_settled = 0;
    mutable int m_markers = 0;
    std::thread m_thread;
};

} // namespace Support

#endif
