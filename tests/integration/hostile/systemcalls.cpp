// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/systemcalls.h"

#include "support/files.h"
#include "support/waiting.h"

using namespace Support;

SystemCalls::SystemCalls(qint64 process, const QStringList &options)
    : m_mainThread(process)
{
    m_tracer.start(QStringLiteral("strace"),
                   QStringList{QStringLiteral("-f"), QStringLiteral("-y"), QStringLiteral("-o"),
                               m_directory.filePath(QStringLiteral("calls")), QStringLiteral("-p"),
                               QString::number(process)}
                       + options);
    m_tracer.setReadChannel(QProcess::StandardError);
    if (!waitFor([this] { return m_tracer.canReadLine(); }))
        qFatal("strace does not begin");
    const QByteArray line = m_tracer.readLine();
    if (!line.contains("attached"))
        qFatal("strace cannot attach: %s", line.constData());
}

SystemCalls::~SystemCalls()
{
    end();
}

QStringList SystemCalls::end()
{
    if (m_tracer.state() != QProcess::NotRunning) {
        m_tracer.terminate();
        m_tracer.waitForFinished(Deadline);
    }
    const QByteArray calls = Files::read(m_directory.filePath(QStringLiteral("calls")));
    QStringList lines;
    const QString prefix = QString::number(m_mainThread) + QLatin1Char(' ');
    for (const QString &line : QString::fromUtf8(calls).split(QLatin1Char('\n'))) {
        if (line.startsWith(prefix))
            lines.append(line.mid(prefix.size()).trimmed());
    }
    return lines;
}

void SystemCalls::drop()
{
    m_tracer.kill();
    m_tracer.waitForFinished(Deadline);
}
