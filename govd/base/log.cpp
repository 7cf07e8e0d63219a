// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "log.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QThread>
#include <QTimer>

#include <atomic>

#include <cstdio>

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace {

/// The longest text that is not cut, in bytes of UTF-8.
constexpr int LongestText = 1024;

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

/// Whether stderr is the journal's stream, whose device and inode systemd puts in JOURNAL_STREAM.
bool isStderrJournal()
{
    struct stat status;
    if (fstat(STDERR_FILENO, &status) != 0)
        return false;
    return qgetenv("JOURNAL_STREAM")
        == QByteArray::number(quint64(status.st_dev)) + ':'
        + QByteArray::number(quint64(status.st_ino));
}

/// Length of the character or escape at @p at, in UTF-16 units.
int unitLength(const QString &text, int at)
{
    if (text.at(at).isHighSurrogate())
        return 2;
    if (text.at(at) != QLatin1Char('\\') || at + 1 == text.size())
        return 1;
    switch (text.at(at + 1).unicode()) {
    case 'u':
        return 6;
    case 'U':
        return 10;
    default:
        return 2;
    }
}

/// Appends as much of @p text as the limit allows. Returns the mark for the rest, if any.
QString appendShortened(QString &line, const QString &text)
{
    const int size = text.toUtf8().size();
    if (size <= LongestText) {
        line += text;
        return QString();
    }
    int end = 0;
    int bytes = 0;
    while (true) {
        const QString unit = text.mid(end, unitLength(text, end));
        const int sum = bytes + unit.toUtf8().size();
        if (sum > LongestText)
            break;
        bytes = sum;
        end += unit.size();
    }
    line.append(text.constData(), end);
    return QStringLiteral("[%1 more bytes]").arg(size - bytes);
}

/// The end of the part, in quotes or between two such texts, that begins at @p start.
int endOfText(const QString &line, int start)
{
    int end = start;
    while (end < line.size() && line.at(end) != QLatin1Char('"'))
        end += unitLength(line, end);
    return qMin(end, line.size());
}

/// @p line with each text in quotes, and each part between two of them, cut at the limit.
QString shortenedParts(const QString &line)
{
    if (line.size() <= LongestText / 3) // the most bytes of a UTF-16 unit
        return line;
    QString result;
    bool isQuoted = false;
    for (int start = 0; start < line.size();) {
        const int end = endOfText(line, start);
        const QString mark = appendShortened(result, line.mid(start, end - start));
        const QString quote = line.mid(end, 1);
        result += isQuoted ? quote + mark : mark + quote;
        isQuoted = !isQuoted;
        start = end + 1;
    }
    return result;
}

void write(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    static const bool isJournal = isStderrJournal();
    const QString formatted = qFormatLogMessage(type, context, message);
    if (formatted.isNull())
        return; // QT_MESSAGE_PATTERN can suppress a line
    QByteArray line = shortenedParts(formatted).toLocal8Bit();
    if (isJournal) {
        const QByteArray prefix = '<' + QByteArray::number(priority(type)) + '>';
        line = prefix + line.replace('\n', '\n' + prefix);
    }
    line += '\n';
    (void)fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
}

std::atomic<int> limitedLines = 0; ///< in the present period, those left out included

void beginPeriod()
{
    const int leftOut = limitedLines.exchange(0) - Log::Burst;
    if (leftOut > 0)
        qWarning("Left out %d log lines that callers caused", leftOut);
}

/// In the main thread, because a timer needs an event loop.
void startPeriod()
{
    QTimer *timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, beginPeriod);
    QObject::connect(timer, &QTimer::timeout, timer, &QObject::deleteLater);
    timer->moveToThread(QCoreApplication::instance()->thread());
    QMetaObject::invokeMethod(timer, "start", Qt::QueuedConnection, Q_ARG(int, Log::Period));
}

bool takesAnotherLimitedLine()
{
    const int before = limitedLines++;
    if (before == 0)
        startPeriod();
    return before < Log::Burst;
}

/// QtDBus logs a line in its own thread for each malformed value in a message of any caller.
/// Whoever may mount storage can keep it busy, and let it go, as often as he likes.
bool canAnyCallerCauseIt(const QMessageLogContext &context)
{
    const QCoreApplication *application = QCoreApplication::instance();
    return isLimited || (application && QThread::currentThread() != application->thread())
        || qstrcmp(context.category, "systemsettings") == 0;
}

void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool isSevere = type == QtCriticalMsg || type == QtFatalMsg;
    if (isSevere || !canAnyCallerCauseIt(context) || takesAnotherLimitedLine())
        write(type, context, message);
}

} // namespace

void Log::install()
{
    qInstallMessageHandler(handle);
}

QString Log::shortenedText(const QString &text)
{
    if (text.size() <= LongestText / 3) // the most bytes of a UTF-16 unit
        return text;
    QString result;
    const QString mark = appendShortened(result, text);
    return result + mark;
}

Log::Limited::Limited()
{
    isLimited = true;
}

Log::Limited::~Limited()
{
    isLimited = false;
}
