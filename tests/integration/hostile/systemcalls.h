// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILE_SYSTEMCALLS_H
#define GOVD_TESTS_HOSTILE_SYSTEMCALLS_H

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// Sees the system calls of a running process, and makes some of them fail or kill it.
class SystemCalls
{
    Q_DISABLE_COPY(SystemCalls)

public:
    /// Attaches to all threads of @p process. @p options are those of strace that say which calls
    /// are seen and what happens to them; they count calls from here on, in each thread.
    SystemCalls(qint64 process, const QStringList &options);
    ~SystemCalls();

    /// Lets the process alone again, if it still is there, and returns the calls of its main
    /// thread, one on each line.
    QStringList end();

    /// Lets the process alone at once, without a word. For one that is dying: strace waits for
    /// ever, now and then, for threads that it has killed itself, and keeps them from being gone.
    void drop();

private:
    qint64 m_mainThread;
    QTemporaryDir m_directory;
    QProcess m_tracer;
};

#endif
