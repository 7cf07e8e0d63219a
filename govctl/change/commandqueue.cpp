// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandqueue.h"

#include "text.h"

CommandQueue::CommandQueue(const QString &command, bool toStandardError)
    : m_command(toStandardError ? QStringLiteral("exec >&2\n") + command : command)
{
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.setStandardInputFile(QProcess::nullDevice());
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int code, QProcess::ExitStatus status) {
                if (status == QProcess::CrashExit)
                    onEnded(QStringLiteral("the command was ended by signal %1").arg(code));
                else if (code != 0)
                    onEnded(QStringLiteral("the command ended with exit code %1").arg(code));
                else
                    onEnded({});
            });
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            onEnded(QStringLiteral("the command could not be started: %1")
                        .arg(m_process.errorString()));
    });
}

void CommandQueue::add(const Event &event)
{
    m_waiting.enqueue(event);
    if (m_process.state() == QProcess::NotRunning)
        runNext();
}

void CommandQueue::runNext()
{
    if (m_waiting.isEmpty())
        return;
    const Event event = m_waiting.dequeue();
    // The command inherits this process's environment; nothing else in the program reads it.
    qputenv("GOVCTL_KIND", event.kindName().toUtf8());
    qputenv("GOVCTL_KEY", event.key.toUtf8());
    qputenv("GOVCTL_VALUE", onOff(event.value).toUtf8());
    m_process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), m_command});
}

void CommandQueue::onEnded(const QString &complaint)
{
    Q_EMIT ended(complaint);
    runNext();
}
