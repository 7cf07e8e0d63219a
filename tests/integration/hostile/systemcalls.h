// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILE_SYSTEMCALLS_H
#define GOVD_TESTS_HOSTILE_SYSTEMCALLS_H

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// Sees the system calls that the main thread of a running process makes, and makes some of them
/// fail or kill the process.
class SystemCalls
{
    Q_DISABLE_COPY(SystemCalls)

public:
    /// Options that make the calls @p number (as in "2", "2+") of @p call fail with @p error, of
    /// those that concern @p path, or of all when it is empty.
    static QStringList failing(const QString &call, const QString &number, const QString &error,
                               const QString &path = {});

    /// For Daemon::setWrapper(): runs the daemon with @p options of strace from its first call on.
    static QStringList wrapper(const QStringList &options);

    /// The number, among those of its name, of the first call @p name in @p calls, which end() has
    /// returned, whose line contains @p text; 0 when there is none.
    static int numberOf(const QString &name, const QString &text, const QStringList &calls);

    /// Attaches to @p process. @p options are those of strace that say which calls are seen and
    /// what happens to them; they count calls from here on.
    SystemCalls(qint64 process, const QStringList &options);
    ~SystemCalls();

    /// Lets the process alone again, if it still is there, and returns its calls, one on each line.
    QStringList end();

    /// Lets the process alone at once, without a word. For one that is dying: strace waits for
    /// ever, now and then, for threads that it has killed itself, and keeps them from being gone.
    void drop();

private:
    QTemporaryDir m_directory;
    QProcess m_tracer;
};

#endif
