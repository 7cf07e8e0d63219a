// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/unit/privatebus.h"

#include <QFile>

namespace {

// On a system bus, it is a helper that starts services; this one only leaves a mark.
const QString Configuration = QStringLiteral(R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <servicehelper>%1/helper</servicehelper>
  <servicedir>%1</servicedir>
  <listen>unix:path=%1/socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
  </policy>
</busconfig>
)");

const QString Helper = QStringLiteral("#!/bin/sh\n: > %1/activated\nexit 1\n");
const QString ServiceFile =
    QStringLiteral("[D-BUS Service]\nName=%1\nExec=/bin/false\nUser=root\n");

} // namespace

PrivateBus::~PrivateBus()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
}

bool PrivateBus::start(const QString &activatable)
{
    const QString directory = m_directory.path();
    bool isWritten = write(QStringLiteral("bus.conf"), Configuration.arg(directory))
        && write(QStringLiteral("helper"), Helper.arg(directory));
    if (!activatable.isEmpty())
        isWritten &= write(activatable + QStringLiteral(".service"), ServiceFile.arg(activatable));
    if (!isWritten)
        return false;

    m_daemon.start(
        QStringLiteral("dbus-daemon"),
        {QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
         QStringLiteral("--config-file=") + m_directory.filePath(QStringLiteral("bus.conf"))});
    // The address is printed when the bus listens.
    if (!m_daemon.waitForReadyRead()) {
        qWarning("%s", m_daemon.readAllStandardError().constData());
        return false;
    }
    return qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_daemon.readLine().trimmed());
}

bool PrivateBus::hasActivated() const
{
    return QFile::exists(m_directory.filePath(QStringLiteral("activated")));
}

bool PrivateBus::write(const QString &name, const QString &content)
{
    QFile file(m_directory.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content.toUtf8()) > 0
        && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
