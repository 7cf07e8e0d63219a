// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/openwatch.h"

#include <array>
#include <cstring>

#include <sys/inotify.h>
#include <unistd.h>

namespace Support {

OpenWatch::OpenWatch(const QString &path)
    : m_descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (inotify_add_watch(m_descriptor, qPrintable(path), IN_OPEN) < 0)
        qFatal("Cannot watch %s", qPrintable(path));
}

OpenWatch::~OpenWatch()
{
    close(m_descriptor);
}

int OpenWatch::opened() const
{
    std::array<char, 4096> buffer;
    ssize_t size = 0;
    while ((size = read(m_descriptor, buffer.data(), buffer.size())) > 0) {
        for (ssize_t position = 0; position < size;) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + position, sizeof event);
            position += static_cast<ssize_t>(sizeof event + event.len);
            // An entry of a watched directory has a name; only the directory itself counts.
            m_opened += event.len == 0 ? 1 : 0;
        }
    }
    return m_opened;
}

} // namespace Support
