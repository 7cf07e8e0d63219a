// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/terminal.h"

#include <QStringList>

#include <cerrno>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// The first @p columns letters of @p line, and all its colours.
QString clippedLine(const QString &line, int columns)
{
    QString result;
    bool steers = false;
    for (const QChar letter : line) {
        steers = steers || letter == QLatin1Char('\033');
        // Half a letter takes no place of its own.
        const bool takesPlace = !steers && !letter.isLowSurrogate() && !letter.isMark();
        columns -= takesPlace ? 1 : 0;
        if (steers || columns >= 0)
            result += letter;
        steers = steers && letter != QLatin1Char('m');
    }
    return result;
}

} // namespace

bool Terminal::canBeSteered()
{
    return isatty(STDOUT_FILENO) && qgetenv("TERM") != "dumb";
}

bool Terminal::wantsColours()
{
    return canBeSteered() && qEnvironmentVariableIsEmpty("NO_COLOR");
}

Terminal::Size Terminal::size()
{
    winsize window{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0)
        return {};
    return {window.ws_col, window.ws_row};
}

QString Terminal::clipped(const QString &text, const Size &size)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    if (size.rows > 0 && lines.size() > size.rows)
        lines = lines.mid(0, size.rows - 1) + QStringList{QString()};
    if (size.columns > 0) {
        for (QString &line : lines)
            line = clippedLine(line, size.columns);
    }
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
