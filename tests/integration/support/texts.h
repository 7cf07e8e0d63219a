// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_TEXTS_H
#define GOVD_TESTS_SUPPORT_TEXTS_H

#include <QStringList>

#include <initializer_list>

namespace Support {

/// A list of lines as a test writes it down.
inline QStringList texts(std::initializer_list<const char *> lines)
{
    QStringList list;
    for (const char *line : lines)
        list.append(QString::fromUtf8(line));
    return list;
}

/// The line of WatchedDaemon::messages() for the audit event with the text "Policy " + @p change.
inline QString eventCall(const QString &change)
{
    return QLatin1String("sendEventStringAlt security-policy-changed INFO_LEVEL Policy ") + change;
}

inline QString eventCall(const char *change)
{
    return eventCall(QString::fromUtf8(change));
}

/// The line of WatchedDaemon::said() for the answer "true".
inline const QString ReplyTrue = QStringLiteral("reply true");

// Lines of WatchedDaemon::messages() for the questions to the bus about a caller. The second one
// follows when the first has not decided.
inline const QString ProcessQuery = QStringLiteral("GetConnectionUnixProcessID caller");
inline const QString UserQuery = QStringLiteral("GetConnectionUnixUser caller");
inline const QStringList BothQueries{ProcessQuery, UserQuery};

/// What the daemon tells a caller of the process id @p process that may not change anything.
inline QString denialText(qint64 process)
{
    return QStringLiteral("PID %1 is not in pellora-mdm group").arg(process);
}

/// The line of WatchedDaemon::messages() for the same.
inline QString denialReply(qint64 process)
{
    return QLatin1String("error org.freedesktop.DBus.Error.AccessDenied ") + denialText(process);
}

} // namespace Support

#endif
