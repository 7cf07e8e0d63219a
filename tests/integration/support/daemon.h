// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_DAEMON_H
#define GOVD_TESTS_SUPPORT_DAEMON_H

#include "support/bus.h"
#include "support/linefile.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

namespace Support {

/// The installed daemon as a process of its own. Ends with this object; its log is shown when the
/// test has failed.
class Daemon
{
    Q_DISABLE_COPY(Daemon)

public:
    Daemon();
    ~Daemon();

    /// Sets a variable of the daemon's environment, before start().
    void setEnvironment(const QString &name, const QString &value);

    /// Runs the daemon as the last argument of @p command, say of strace, before start().
    void setWrapper(const QStringList &command);

    /// Starts the process and returns without waiting for anything.
    void launch();

    /// Starts the process and waits until it serves. False when it ends first.
    [[nodiscard]] bool start();

    /// Waits until the process serves. False when it ends first.
    [[nodiscard]] bool waitUntilReady();

    /// Waits for the process to end. The exit code; -1 when a signal ended it.
    int waitForExit();

    /// Ends it as the service manager does, with SIGTERM. The exit code; -1 when a signal ended it.
    int stop();

    /// Ends it without a chance to do anything about it.
    void kill();

    /// Stops the process from running until resume(). Messages wait for it meanwhile.
    void pause();
    void resume();

    bool isRunning() const;

    /// The process id of the daemon itself, not that of a wrapper; 0 when it does not run.
    qint64 processId() const;

    /// What it has written to its standard error in all starts so far, but the first @p since
    /// lines. A message has the form "type|category|text", as in "warning|default|Cannot do it".
    QStringList log(int since = 0) const;

    /// The number of lines in the log so far.
    int mark() const;

    /// Waits for a line of the log that contains @p text.
    [[nodiscard]] bool waitForLog(const QString &text, int since = 0) const;

private:
    void signal(int number) const;

    QTemporaryDir m_directory;
    LineFile m_log;
    QStringList m_wrapper;
    QProcessEnvironment m_environment;
    QProcess m_process;
    Bus m_bus;
};

} // namespace Support

#endif
