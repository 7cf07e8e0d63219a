// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "writerecord.h"

#include "journal.h"
#include "log.h"

#include <QDebug>
#include <QElapsedTimer>

#include <array>
#include <climits>

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

namespace {

int leftOut = 0; ///< records not sent since the last one that was

bool takesAnotherDenied()
{
    static QElapsedTimer period;
    static int count = 0;
    if (!period.isValid() || period.hasExpired(Log::Period)) {
        period.start();
        count = 0;
    }
    return ++count <= Log::Burst;
}

QByteArray processFile(int pid, const char *name)
{
    return "/proc/" + QByteArray::number(pid) + name;
}

/// The path of the program that a process runs; empty if it may not be read.
QString programOf(int pid)
{
    std::array<char, PATH_MAX> text;
    const auto size = readlink(processFile(pid, "/exe").constData(), text.data(), text.size());
    return QString::fromUtf8(text.data(), qMax(0, static_cast<int>(size)));
}

/// The name that a process has given itself: it can look like the path of any program.
QString commandOf(int pid)
{
    std::array<char, 64> text; // the kernel keeps 15 bytes
    const int file = open(processFile(pid, "/comm").constData(), O_RDONLY | O_CLOEXEC);
    const auto size = read(file, text.data(), text.size()) - 1; // without the line break
    close(file);
    return QString::fromUtf8(text.data(), qMax(0, static_cast<int>(size)));
}

/// @p text in quotes and escaped, so that a key cannot imitate other parts of the message.
QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << Log::shortenedText(text);
    return result;
}

QString nameOf(WriteRecord::Refusal reason)
{
    switch (reason) {
    case WriteRecord::Denied:
        return QStringLiteral("denied");
    case WriteRecord::Locked:
        return QStringLiteral("locked");
    case WriteRecord::CannotBeHeld:
        return QStringLiteral("cannot-be-held");
    case WriteRecord::NotSaved:
        return QStringLiteral("not-saved");
    case WriteRecord::NoPlugin:
        return QStringLiteral("no-plugin");
    case WriteRecord::RefusedByPlugin:
        return QStringLiteral("refused-by-plugin");
    }
    return QString();
}

void send(JournalRecord &record, JournalRecord::WhenFull whenFull)
{
    if (leftOut)
        record.add("GOVD_LEFT_OUT", QString::number(leftOut));
    leftOut = record.send(whenFull) ? 0 : leftOut + 1;
}

} // namespace

QString valueText(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::UChar:
        // toString() makes a byte the character with that code, and 0 would end the audit line.
        return QString::number(value.toUInt());
    case QMetaType::QByteArray:
        // Up to the first zero byte, where toString() of Qt 5 ends, and that of Qt 6 does not.
        return QString::fromUtf8(value.toByteArray().constData());
    default:
        return value.toString();
    }
}

WriteRecord::WriteRecord(Kind kind, const QString &key, const QVariant &newValue)
    : m_kind(kind)
    , m_key(key)
    , m_newValue(newValue)
{
}

void WriteRecord::setCaller(const QString &busName, int pid, std::optional<uint> uid)
{
    if (!JournalRecord::hasJournal())
        return;
    m_caller = busName;
    m_pid = pid;
    m_uid = uid;
    if (!pid)
        return;
    m_program = programOf(pid);
    if (m_program.isEmpty())
        m_command = commandOf(pid);
}

void WriteRecord::accept(const QString &oldText) const
{
    if (m_caller.isEmpty())
        return;
    JournalRecord record = withResult(QStringLiteral("accepted"), LOG_INFO);
    record.add("GOVD_OLD_VALUE", oldText);
    send(record, JournalRecord::Wait);
}

bool WriteRecord::refuse(Refusal reason) const
{
    if (m_caller.isEmpty())
        return false;
    if (reason == Denied && !takesAnotherDenied()) {
        ++leftOut;
        return false;
    }
    JournalRecord record = withResult(nameOf(reason), LOG_NOTICE);
    send(record, JournalRecord::Drop);
    return false;
}

JournalRecord WriteRecord::withResult(const QString &result, int priority) const
{
    const QString kind = m_kind == Policy ? QStringLiteral("policy") : QStringLiteral("switch");
    JournalRecord record;
    record.add("MESSAGE", QStringLiteral("Write %1: %2 ").arg(result, kind) + quoted(m_key));
    record.add("MESSAGE_ID", QLatin1String(WriteMessageId));
    record.add("PRIORITY", QString::number(priority));
    record.add("SYSLOG_IDENTIFIER", QStringLiteral("govd"));
    record.add("GOVD_KIND", kind);
    record.add("GOVD_KEY", m_key);
    record.add("GOVD_NEW_VALUE", valueText(m_newValue));
    record.add("GOVD_RESULT", result);
    record.add("GOVD_CALLER", m_caller);
    if (m_pid)
        record.add("GOVD_CALLER_PID", QString::number(m_pid));
    if (m_uid)
        record.add("GOVD_CALLER_UID", QString::number(*m_uid));
    if (!m_program.isEmpty())
        record.add("GOVD_CALLER_PROGRAM", m_program);
    if (!m_command.isEmpty())
        record.add("GOVD_CALLER_COMMAND", m_command);
    return record;
}
