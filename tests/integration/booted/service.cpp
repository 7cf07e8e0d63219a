// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "service.h"

#include "support/files.h"
#include "support/waiting.h"

#include <QFile>
#include <QProcess>

#include <signal.h>

namespace Service {

namespace {

const QString Unit = QStringLiteral("govd.service");
const QString OpenPolicy = QStringLiteral("/etc/dbus-1/system.d/open.conf");

void reloadBus()
{
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    run(QStringLiteral("busctl"),
        {QStringLiteral("call"), bus, QStringLiteral("/"), bus, QStringLiteral("ReloadConfig")});
}

} // namespace

QByteArray run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(Support::Deadline) || process.exitCode() != 0)
        qFatal("%s fails", qPrintable(program));
    return process.readAllStandardOutput().trimmed();
}

void startFresh()
{
    run(QStringLiteral("systemctl"), {QStringLiteral("stop"), Unit});
    Support::Files::reset();
    run(QStringLiteral("systemd-tmpfiles"),
        {QStringLiteral("--create"), QStringLiteral("govd.conf")});
    run(QStringLiteral("systemctl"), {QStringLiteral("start"), Unit});
}

int process()
{
    return run(QStringLiteral("systemctl"),
               {QStringLiteral("show"), QStringLiteral("-P"), QStringLiteral("MainPID"), Unit})
        .toInt();
}

Pause::Pause()
    : m_process(process())
{
    kill(m_process, SIGSTOP);
}

Pause::~Pause()
{
    kill(m_process, SIGCONT);
}

OpenBus::OpenBus()
{
    Support::Files::write(OpenPolicy,
                          "<busconfig><policy context='default'>"
                          "<allow send_destination='org.kvt.PolicyManager'/>"
                          "</policy></busconfig>");
    reloadBus();
}

OpenBus::~OpenBus()
{
    QFile::remove(OpenPolicy);
    reloadBus();
}

} // namespace Service
