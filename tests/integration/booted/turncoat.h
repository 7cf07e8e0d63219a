// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_BOOTED_TURNCOAT_H
#define GOVD_TESTS_BOOTED_TURNCOAT_H

#include "support/identity.h"
#include "wire.h"

#include <QByteArray>

#include <sys/types.h>

/// A client of the bus in a process of its own that connects, says all that it has to say in one
/// piece, and at once executes another program, which may be a set-user-id or set-group-id one. The
/// bus and the daemon meanwhile judge the call.
///
/// The program must copy its standard input, the connection, to its standard output: so this object
/// learns of the answer.
class Turncoat
{
    Q_DISABLE_COPY(Turncoat)

public:
    Turncoat(const Support::Identity &identity, const Wire::Call &call, const QByteArray &program);
    ~Turncoat();

    /// Waits until the process runs as this user and group, and the bus has taken it in.
    [[nodiscard]] bool waitUntilTurned(uid_t user, gid_t group);

    /// Waits for the answer. None when there is none.
    Wire::Answer answer();

private:
    [[noreturn]] void turn(const Support::Identity &identity, const QByteArray &words,
                           const char *program, int output);
    bool read(int milliseconds);

    pid_t m_process = -1;
    int m_output = -1;
    QByteArray m_heard;
};

#endif
