// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "journal.h"

#include "log.h"

#include <QString>
#include <QtEndian>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr sockaddr_un Address = {AF_UNIX, "/run/systemd/journal/socket"};
constexpr timeval LongestWait = {1, 0};
constexpr int UsualSize = 1024;

int journal = -1; ///< not connected, so that a journal that was restarted still gets records

} // namespace

void JournalRecord::findJournal()
{
    if (!GOVD_SYSTEMD || access(Address.sun_path, W_OK) != 0)
        return;
    journal = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    setsockopt(journal, SOL_SOCKET, SO_SNDTIMEO, &LongestWait, sizeof LongestWait);
}

JournalRecord::JournalRecord()
{
    m_fields.reserve(UsualSize);
}

bool JournalRecord::hasJournal()
{
    return journal >= 0;
}

void JournalRecord::add(const char *name, const QString &text)
{
    const QByteArray value = Log::shortenedText(text).toUtf8();
    const quint64 size = qToLittleEndian(static_cast<quint64>(value.size()));
    m_fields += name;
    m_fields += '\n'; // then size and bytes: the form for values that may hold line breaks
    m_fields.append(reinterpret_cast<const char *>(&size), sizeof size);
    m_fields += value;
    m_fields += '\n';
}

bool JournalRecord::send(WhenFull whenFull) const
{
    return sendto(journal, m_fields.constData(), static_cast<size_t>(m_fields.size()),
                  MSG_NOSIGNAL | (whenFull == Drop ? MSG_DONTWAIT : 0),
                  reinterpret_cast<const sockaddr *>(&Address), sizeof Address)
        >= 0;
}
