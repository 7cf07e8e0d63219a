// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/terminal.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

bool Terminal::wantsColours()
{
    return isatty(STDOUT_FILENO) && qEnvironmentVariableIsEmpty("NO_COLOR")
        && qgetenv("TERM") != "dumb";
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
