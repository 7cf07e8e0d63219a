// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/daemon.h"

#include "support/waiting.h"

#include <QFile>
#include <QTest>

#include <cstdio>

#include <signal.h>

namespace Support {

Daemon::Daemon()
    : m_log(m_directory.filePath(QStringLiteral("log")))
    , m_environment(QProcessEnvironment::systemEnvironment())
{
    setEnvironment(QStringLiteral("QT_MESSAGE_PATTERN"),
                   QStringLiteral("%{type}|%{category}|%{message}"));
    setEnvironment(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
    m_process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    m_process.setStandardErrorFile(m_log.path(), QIODevice::Append);
}

Daemon::~Daemon()
{
    if (isRunning())
        kill();
    if (!QTest::currentTestFailed())
        return;
    std::fputs("--- log of the daemon ---\n", stderr);
    std::fputs(qPrintable(log().join(QLatin1Char('\n'))), stderr);
    std::fputs("\n--- end of the log ---\n", stderr);
}

void Daemon::setEnvironment(const QString &name, const QString &value)
{
    m_environment.insert(name, value);
}

void Daemon::setWrapper(const QStringList &command)
{
    m_wrapper = command;
    // A sanitizer cannot look for leaks in a process that is being traced.
    setEnvironment(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
}

void Daemon::launch()
{
    QStringList command = m_wrapper;
    command.append(QStringLiteral("/usr/sbin/govd"));
    m_process.setProcessEnvironment(m_environment);
    m_process.start(command.takeFirst(), command);
    if (!m_process.waitForStarted())
        qFatal("The daemon cannot be started: %s", qPrintable(m_process.errorString()));
}

bool Daemon::start()
{
    launch();
    return waitUntilReady();
}

bool Daemon::waitUntilReady()
{
    const QString service = QStringLiteral("org.kvt.PolicyManager");
    const bool settled = waitFor([&] {
        return !isRunning() || (m_bus.isRunning() && m_bus.ownerProcess(service) == processId());
    });
    return settled && isRunning();
}

int Daemon::waitForExit()
{
    if (!waitFor([this] { return !isRunning(); }))
        qFatal("The daemon does not end");
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

int Daemon::stop()
{
    signal(SIGTERM);
    return waitForExit();
}

void Daemon::kill()
{
    signal(SIGKILL);
    m_process.waitForFinished();
}

void Daemon::pause()
{
    signal(SIGSTOP);
}

void Daemon::resume()
{
    signal(SIGCONT);
}

bool Daemon::isRunning() const
{
    return m_process.state() != QProcess::NotRunning;
}

qint64 Daemon::processId() const
{
    const qint64 process = m_process.processId();
    if (m_wrapper.isEmpty() || process == 0)
        return process;
    // A wrapper either has the daemon as its child or has become the daemon.
    QFile children(QStringLiteral("/proc/%1/task/%1/children").arg(process));
    children.open(QIODevice::ReadOnly);
    const qint64 child = children.readAll().split(' ').value(0).toLongLong();
    return child != 0 ? child : process;
}

QStringList Daemon::log(int since) const
{
    return m_log.lines(since);
}

int Daemon::mark() const
{
    return m_log.mark();
}

bool Daemon::waitForLog(const QString &text, int since) const
{
    return m_log.waitForLine(text, since);
}

void Daemon::signal(int number) const
{
    const qint64 process = processId();
    if (process == 0)
        qFatal("The daemon is to get signal %d, but it does not run", number);
    ::kill(static_cast<pid_t>(process), number);
}

} // namespace Support
