// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/systemlog.h"

#include "support/waiting.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Support {

namespace {

const char Path[] = "/dev/log";
const char Marker[] = "settled";

sockaddr_un address()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::copy(std::begin(Path), std::end(Path), address.sun_path);
    return address;
}

int listenAtPath()
{
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un target = address();
    unlink(Path);
    if (bind(descriptor, reinterpret_cast<const sockaddr *>(&target), sizeof target) != 0)
        qFatal("Cannot listen at %s", Path);
    chmod(Path, 0666);
    return descriptor;
}

/// Splits "<14>Jan  1 00:00:00 program: text"; a number in brackets may follow the program.
SystemLogLine parse(const QByteArray &datagram)
{
    static const QRegularExpression format(
        QStringLiteral("^<(\\d+)>\\w{3} [ \\d]\\d [\\d:]{8} ([^:\\[]*)(?:\\[\\d+\\])?: (.*)$"),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = format.match(QString::fromUtf8(datagram));
    if (!match.hasMatch())
        return {-1, QString(), QString::fromUtf8(datagram)};
    return {match.captured(1).toInt(), match.captured(2), match.captured(3)};
}

} // namespace

SystemLog::SystemLog()
    : m_socket(listenAtPath())
    , m_end(eventfd(0, EFD_CLOEXEC))
    , m_thread([this] { read(); })
{
}

SystemLog::~SystemLog()
{
    eventfd_write(m_end, 1);
    m_thread.join();
    unlink(Path);
    close(m_socket);
    close(m_end);
}

void SystemLog::settle() const
{
    ++m_markers;
    const sockaddr_un target = address();
    sendto(m_socket, Marker, sizeof Marker - 1, 0, reinterpret_cast<const sockaddr *>(&target),
           sizeof target);
    const bool arrived = waitFor([this] {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_settled == m_markers;
    });
    if (!arrived)
        qFatal("The system log does not see what is sent");
}

QVector<SystemLogLine> SystemLog::lines(int since) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines.mid(since);
}

int SystemLog::mark() const
{
    settle();
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines.size();
}

bool SystemLog::waitForLine(const QString &text, int since) const
{
    return waitFor([&] {
        const QVector<SystemLogLine> later = lines(since);
        return std::any_of(later.cbegin(), later.cend(),
                           [&](const SystemLogLine &line) { return line.text.contains(text); });
    });
}

void SystemLog::read()
{
    std::array<char, 65536> buffer;
    while (true) {
        pollfd sources[] = {{m_socket, POLLIN, 0}, {m_end, POLLIN, 0}};
        if (poll(sources, 2, -1) < 0)
            continue; // interrupted, as by a change of the user
        if (sources[1].revents != 0)
            return;
        const ssize_t size = recv(m_socket, buffer.data(), buffer.size(), 0);
        if (size >= 0)
            take(QByteArray(buffer.data(), static_cast<int>(size)));
    }
}

void SystemLog::take(const QByteArray &datagram)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (datagram == Marker)
        ++m_settled;
    else
        m_lines.append(parse(datagram));
}

} // namespace Support
