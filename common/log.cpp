// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/log.h"

#include <QByteArray>
#include <QString>
#include <QTimer>

#include <cstdio>

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace {

/// The longest text made at run time that a line holds whole, in bytes.
constexpr int LongestText = 1024;

/// Of the lines that callers without rights can cause, so many are written in so many milliseconds.
constexpr int Burst = 100;
constexpr int Period = 10'000;

thread_local bool isLimited = false;

int priority(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return LOG_DEBUG;
    case QtInfoMsg:
        return LOG_INFO;
    case QtWarningMsg:
        return LOG_WARNING;
    case QtCriticalMsg:
        return LOG_CRIT;
    case QtFatalMsg:
        return LOG_ALERT;
    }
    return LOG_NOTICE;
}

/// Whether stderr is the journal's stream: the service manager leaves its device and inode number.
bool isStderrJournal()
{
    struct stat status;
    if (fstat(STDERR_FILENO, &status) != 0)
        return false;
    return qgetenv("JOURNAL_STREAM")
        == QByteArray::number(quint64(status.st_dev)) + ':'
        + QByteArray::number(quint64(status.st_ino));
}

/// Where the run that begins at @p start ends: a text in quotes is one run, and what stands between
/// two of them is another. Only what was made at run time can be as long as is worth cutting.
int endOfRun(const QByteArray &line, int start)
{
    const bool isQuoted = line.at(start) == '"';
    int end = start + (isQuoted ? 1 : 0);
    while (end < line.size() && line.at(end) != '"')
        end += isQuoted && line.at(end) == '\\' ? 2 : 1;
    return qMin(end + (isQuoted ? 1 : 0), line.size());
}

/// The first bytes of a run and a mark, cut in front of an escape or a character of several bytes.
QByteArray cut(const QByteArray &run)
{
    const bool isQuoted = run.startsWith('"');
    int end = 1;
    while (end < LongestText)
        end += isQuoted && run.at(end) == '\\' ? 2 : 1;
    while ((run.at(end) & 0xC0) == 0x80)
        --end;
    return run.left(end) + (isQuoted ? "\"" : "") + "[" + QByteArray::number(run.size() - end)
        + " more bytes]";
}

QByteArray shortened(const QByteArray &line)
{
    if (line.size() <= LongestText)
        return line;
    QByteArray result;
    for (int start = 0; start < line.size();) {
        const int end = endOfRun(line, start);
        const QByteArray run = line.mid(start, end - start);
        result += run.size() > LongestText ? cut(run) : run;
        start = end;
    }
    return result;
}

void write(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    static const bool isJournal = isStderrJournal();
    const QString formatted = qFormatLogMessage(type, context, message);
    if (formatted.isNull())
        return; // by the pattern that the environment may set
    QByteArray line = shortened(formatted.toLocal8Bit());
    if (isJournal) {
        const QByteArray prefix = '<' + QByteArray::number(priority(type)) + '>';
        line = prefix + line.replace('\n', '\n' + prefix);
    }
    line += '\n';
    fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
}

/// Counts the lines of the present period. Main thread only, as is whatever answers callers.
class Limit
{
public:
    bool takesAnother()
    {
        if (m_lines == 0)
            QTimer::singleShot(Period, [this] { beginAgain(); });
        return ++m_lines <= Burst;
    }

private:
    void beginAgain()
    {
        const int leftOut = m_lines - Burst;
        m_lines = 0;
        if (leftOut > 0)
            qWarning("Left out %d log lines that callers caused", leftOut);
    }

    int m_lines = 0;
};

void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    static Limit limit;
    if (!isLimited || limit.takesAnother())
        write(type, context, message);
}

} // namespace

void Log::install()
{
    qInstallMessageHandler(handle);
}

Log::Limited::Limited(bool limited)
    : m_before(isLimited)
{
    isLimited = m_before || limited;
}

Log::Limited::~Limited()
{
    isLimited = m_before;
}
