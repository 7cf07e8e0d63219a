// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/bus.h"

#include "support/waiting.h"

#include <QDBusPendingCall>
#include <QFile>
#include <QProcess>

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Support {

namespace {

const char ProcessIdFile[] = "/run/dbus/pid";
const char Address[] = "unix:path=/run/dbus/system_bus_socket";

pid_t busProcess()
{
    QFile file(QString::fromLatin1(ProcessIdFile));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toInt() : 0;
}

void endProcess(pid_t process)
{
    // glibc 2.36 declares pidfd_open() for C only.
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    if (handle < 0)
        return;
    kill(process, SIGTERM);
    pollfd end = {handle, POLLIN, 0};
    if (poll(&end, 1, Deadline) != 1)
        qFatal("Process %d does not end", process);
    close(handle);
}

} // namespace

Bus::Bus() = default;

Bus::~Bus()
{
    for (const QString &name : qAsConst(m_connections))
        QDBusConnection::disconnectFromBus(name);
    if (!isRunning())
        start();
}

bool Bus::isRunning() const
{
    return busProcess() > 0;
}

void Bus::stop()
{
    endProcess(busProcess());
    QFile::remove(QString::fromLatin1(ProcessIdFile));
}

void Bus::start()
{
    // The program goes to the background once the bus listens.
    const int result = QProcess::execute(QStringLiteral("dbus-daemon"),
                                         {QStringLiteral("--system"), QStringLiteral("--fork")});
    if (result != 0)
        qFatal("The system bus does not start: %d", result);
}

QDBusConnection Bus::connect()
{
    static int number = 0;
    const QString name = QStringLiteral("govd-test-%1").arg(++number);
    m_connections.append(name);
    return QDBusConnection::connectToBus(QString::fromLatin1(Address), name);
}

QDBusMessage Bus::call(const QDBusMessage &message)
{
    const QDBusPendingCall pending = ownConnection().asyncCall(message, Deadline);
    if (!waitFor([&] { return pending.isFinished(); }, 2 * Deadline))
        qFatal("No end of a call of %s", qPrintable(message.member()));
    return pending.reply();
}

bool Bus::hasOwner(const QString &name)
{
    return ask(QStringLiteral("NameHasOwner"), name).arguments().value(0).toBool();
}

qint64 Bus::ownerProcess(const QString &name)
{
    const QDBusMessage reply = ask(QStringLiteral("GetConnectionUnixProcessID"), name);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0).toLongLong() : 0;
}

bool Bus::waitForOwner(const QString &name)
{
    return waitFor([&] { return hasOwner(name); });
}

bool Bus::waitForNoOwner(const QString &name)
{
    return waitFor([&] { return !hasOwner(name); });
}

QDBusConnection Bus::ownConnection()
{
    // The bus may have been gone in between.
    if (m_own.isEmpty() || !QDBusConnection(m_own).isConnected())
        m_own = connect().name();
    return QDBusConnection(m_own);
}

QDBusMessage Bus::ask(const QString &method, const QString &name)
{
    const QString service = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/freedesktop/DBus"), service, method);
    message.setArguments({name});
    return call(message);
}

} // namespace Support
