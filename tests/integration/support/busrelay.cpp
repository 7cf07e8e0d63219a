// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/busrelay.h"

#include "support/waiting.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Support {

namespace {

const sockaddr_un Own = {AF_UNIX, "/run/govd-test-relay"};
const sockaddr_un Bus = {AF_UNIX, "/run/dbus/system_bus_socket"};

const sockaddr *generic(const sockaddr_un &address)
{
    return reinterpret_cast<const sockaddr *>(&address);
}

int newSocket()
{
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

QByteArray readFrom(int descriptor)
{
    QByteArray bytes(65536, Qt::Uninitialized);
    const ssize_t size = recv(descriptor, bytes.data(), size_t(bytes.size()), 0);
    bytes.resize(qMax(0, int(size)));
    return bytes;
}

/// False when the other end is gone.
bool writeTo(int descriptor, const QByteArray &bytes)
{
    for (int done = 0; done < bytes.size();) {
        const ssize_t size =
            send(descriptor, bytes.constData() + done, size_t(bytes.size() - done), MSG_NOSIGNAL);
        if (size < 0)
            return false;
        done += int(size);
    }
    return true;
}

/// Where the method call begins that holds the byte at @p position, as a little-endian machine
/// sends it; 0 if that is not found. One read may give more than one message, and those before must
/// not wait.
int startOfMessage(const QByteArray &bytes, int position)
{
    constexpr char MethodCall = 1;
    constexpr char Protocol = 1;
    for (int i = position - 4; i > 0; --i) {
        if (bytes[i] == 'l' && bytes[i + 1] == MethodCall && bytes[i + 3] == Protocol)
            return i;
    }
    return 0;
}

} // namespace

BusRelay::BusRelay()
    : m_listener(newSocket())
    , m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    unlink(Own.sun_path);
    if (bind(m_listener, generic(Own), sizeof Own) != 0 || listen(m_listener, 1) != 0)
        qFatal("Cannot listen at %s", Own.sun_path);
    m_thread = std::thread([this] { run(); });
}

BusRelay::~BusRelay()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    wake();
    m_thread.join();
    unlink(Own.sun_path);
    close(m_listener);
    close(m_wake);
}

QString BusRelay::address() const
{
    return QLatin1String("unix:path=") + QLatin1String(Own.sun_path);
}

void BusRelay::holdAt(const QByteArray &text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_holdAt = text;
}

bool BusRelay::waitUntilHeld() const
{
    return waitFor([this] {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return !m_held.isEmpty();
    });
}

void BusRelay::release()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_holdAt.clear();
    }
    wake();
}

void BusRelay::spoil(const QByteArray &text, const QByteArray &other)
{
    Q_ASSERT(text.size() == other.size());
    m_spoilt = text;
    m_other = other;
}

void BusRelay::wake()
{
    eventfd_write(m_wake, 1);
}

/// Serves one client, from its coming to its end or that of this object.
void BusRelay::run()
{
    pollfd sources[] = {{m_wake, POLLIN, 0}, {m_listener, POLLIN, 0}};
    poll(sources, 2, -1);
    if (sources[1].revents == 0)
        return;
    const int client = accept(m_listener, nullptr, nullptr);
    const int bus = newSocket();
    bool isOpen = connect(bus, generic(Bus), sizeof Bus) == 0;
    while (isOpen) {
        pollfd ends[] = {{m_wake, POLLIN, 0}, {client, POLLIN, 0}, {bus, POLLIN, 0}};
        poll(ends, 3, -1);
        eventfd_t ignored = 0;
        eventfd_read(m_wake, &ignored);
        if (ends[0].revents != 0 || ends[1].revents != 0)
            isOpen = passToBus(ends[1].revents != 0 ? client : -1, bus);
        if (isOpen && ends[2].revents != 0) {
            const QByteArray bytes = readFrom(bus);
            isOpen = !bytes.isEmpty() && writeTo(client, bytes);
        }
    }
    close(client);
    close(bus);
}

/// Passes on what has been held up and may go now, and what there is to read from @p client unless
/// that is -1. False when this has come to an end.
bool BusRelay::passToBus(int client, int bus)
{
    const QByteArray fresh = client < 0 ? QByteArray() : readFrom(client);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isEnding || (client >= 0 && fresh.isEmpty()))
        return false;
    m_held += fresh;
    if (!m_spoilt.isEmpty())
        m_held.replace(m_spoilt, m_other);
    const int found = m_holdAt.isEmpty() ? -1 : m_held.indexOf(m_holdAt);
    const int size = found < 0 ? m_held.size() : startOfMessage(m_held, found);
    const bool isWritten = writeTo(bus, m_held.left(size));
    m_held.remove(0, size);
    return isWritten;
}

} // namespace Support
