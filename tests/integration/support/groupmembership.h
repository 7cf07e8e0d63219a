// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_GROUPMEMBERSHIP_H
#define GOVD_TESTS_SUPPORT_GROUPMEMBERSHIP_H

#include "support/files.h"

namespace Support {

/// Adds a user to a group that has members already, until this object is gone.
class GroupMembership
{
    Q_DISABLE_COPY(GroupMembership)

public:
    GroupMembership(const char *user, const char *group)
        : m_path(QStringLiteral("/etc/group"))
        , m_before(Files::read(m_path))
    {
        QByteArrayList lines = m_before.split('\n');
        for (QByteArray &line : lines) {
            if (line.startsWith(QByteArray(group) + ':'))
                line += QByteArray(",") + user;
        }
        Files::write(m_path, lines.join('\n'));
    }

    ~GroupMembership() { Files::write(m_path, m_before); }

private:
    QString m_path;
    QByteArray m_before;
};

} // namespace Support

#endif
