// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "terminal.h"

#include <QRegularExpression>
#include <QStringList>

#include <cerrno>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// The number of columns that @p text takes on a line.
int widthOf(const QString &text)
{
    int result = 0;
    bool inColourCode = false;
    for (const QChar unit : text) {
        inColourCode = inColourCode || unit == QLatin1Char('\033');
        // The second half of a surrogate pair and combining marks take no column of their own.
        if (!inColourCode && !unit.isLowSurrogate() && !unit.isMark())
            ++result;
        inColourCode = inColourCode && unit != QLatin1Char('m');
    }
    return result;
}

/// The blanks between the columns of a line.
const QRegularExpression &gaps()
{
    static const QRegularExpression result(QStringLiteral("  +(?=[^ ])"));
    return result;
}

/// The indent of the text in the last column of @p line, if it leaves half of @p columns for it.
int indentOf(const QString &line, int columns)
{
    int result = 0;
    for (auto gap = gaps().globalMatch(line); gap.hasNext();) {
        const int column = widthOf(line.left(gap.next().capturedEnd()));
        result = column <= columns / 2 ? column : result;
    }
    return result;
}

QString foldedLine(QString line, int columns)
{
    if (widthOf(line) <= columns)
        return line;
    const QString indent(indentOf(line, columns), QLatin1Char(' '));
    // Without room for columns, the blanks that align them go first.
    if (indent.isEmpty())
        line.replace(gaps(), QStringLiteral("  "));
    const QStringList words = line.split(QLatin1Char(' '));
    QString result;
    QString row = words.first();
    const auto rest = words.mid(1);
    for (const QString &word : rest) {
        if (!row.trimmed().isEmpty() && widthOf(row) + 1 + widthOf(word) > columns) {
            result += row + QLatin1Char('\n');
            row = indent + word;
        } else {
            row += QLatin1Char(' ') + word;
        }
    }
    return result + row;
}

} // namespace

bool Terminal::wantsColours()
{
    return isatty(STDOUT_FILENO) && qgetenv("TERM") != "dumb"
        && qEnvironmentVariableIsEmpty("NO_COLOR");
}

int Terminal::columns(int descriptor)
{
    winsize window{};
    return ioctl(descriptor, TIOCGWINSZ, &window) == 0 ? window.ws_col : 0;
}

QString Terminal::folded(const QString &text, int columns)
{
    if (columns == 0)
        return text;
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = foldedLine(line, columns);
    return lines.join(QLatin1Char('\n'));
}

int Terminal::write(int descriptor, const QByteArray &bytes)
{
    int done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            ::write(descriptor, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (written >= 0) {
            done += static_cast<int>(written);
        } else if (errno == EAGAIN) {
            pollfd ready{descriptor, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}
