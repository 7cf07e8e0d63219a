// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/blockedsystemlog.h"

#include "support/files.h"
#include "support/waiting.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

namespace Support {

namespace {

const char Filler[] = "full";

} // namespace

BlockedSystemLog::BlockedSystemLog()
    : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    , m_filler(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    const sockaddr_un address = {AF_UNIX, "/dev/log"};
    const auto *target = reinterpret_cast<const sockaddr *>(&address);
    unlink(address.sun_path);
    if (bind(m_socket, target, sizeof address) != 0)
        qFatal("Cannot listen at /dev/log");
    while (sendto(m_filler, Filler, sizeof Filler, 0, target, sizeof address) > 0)
        continue;
}

BlockedSystemLog::~BlockedSystemLog()
{
    unlink("/dev/log");
    close(m_socket);
    close(m_filler);
}

bool BlockedSystemLog::waitForWriter(qint64 process) const
{
    // The kernel tells the number of the system call in which a thread waits; syslog() ends in
    // this one, and nothing else does.
    const QByteArray call = QByteArray::number(SYS_sendto) + ' ';
    const QString path = QStringLiteral("/proc/%1/syscall").arg(process);
    return waitFor([&] { return Files::read(path).startsWith(call); });
}

QByteArray BlockedSystemLog::take()
{
    const QByteArray filler(Filler, sizeof Filler);
    QByteArray line = filler;
    while (line == filler) {
        line.resize(1000);
        line.resize(int(recv(m_socket, line.data(), size_t(line.size()), 0)));
    }
    return line;
}

} // namespace Support
