// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "unixsignal.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>

#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

/// By signal number, the eventfd that its handler writes.
std::array<int, NSIG> descriptors;

void report(int number)
{
    const int error = errno; // the interrupted code may be about to read it
    eventfd_write(descriptors.at(static_cast<size_t>(number)), 1);
    errno = error;
}

void setHandler(int number, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

} // namespace

UnixSignal::UnixSignal(int number, QObject *parent)
    : QObject(parent)
    , m_number(number)
    , m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_descriptor < 0)
        return; // the signal keeps its default action
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        eventfd_t count;
        if (eventfd_read(m_descriptor, &count) == 0)
            Q_EMIT caught();
    });
    descriptors.at(static_cast<size_t>(number)) = m_descriptor;
    setHandler(number, report);
}

UnixSignal::~UnixSignal()
{
    setHandler(m_number, SIG_DFL);
    m_notifier.reset(); // before close(), after which the number can be reused
    close(m_descriptor);
}
