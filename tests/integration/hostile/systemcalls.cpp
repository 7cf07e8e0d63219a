// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostile/systemcalls.h"

#include "support/files.h"
#include "support/waiting.h"

using namespace Support;

QStringList SystemCalls::failing(const QString &call, const QString &number, const QString &error,
                                 const QString &path)
{
    QStringList options{QStringLiteral("-e"), QLatin1String("trace=") + call, QStringLiteral("-e"),
                        QStringLiteral("inject=%1:error=%2:when=%3").arg(call, error, number)};
    if (!path.isEmpty())
        options += {QStringLiteral("-P"), path};
    return options;
}

QStringList SystemCalls::wrapper(const QStringList &options)
{
    return QStringList{QStringLiteral("strace"), QStringLiteral("-o"), QStringLiteral("/dev/null")}
    + options;
}

int SystemCalls::numberOf(const QString &name, const QString &text, const QStringList &calls)
{
    int number = 0;
    for (const QString &line : calls) {
        if (!line.startsWith(name + QLatin1Char('(')))
            continue;
        ++number;
        if (line.contains(text))
            return number;
    }
    return 0;
}

SystemCalls::SystemCalls(qint64 process, const QStringList &options)
{
    m_tracer.start(QStringLiteral("strace"),
                   QStringList{QStringLiteral("-y"), QStringLiteral("-o"),
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
    for (const QString &line : QString::fromUtf8(calls).split(QLatin1Char('\n')))
        lines.append(line.trimmed());
    return lines;
}

void SystemCalls::drop()
{
    m_tracer.kill();
    m_tracer.waitForFinished(Deadline);
}
