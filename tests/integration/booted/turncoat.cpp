// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "turncoat.h"

#include "support/waiting.h"

#include <QElapsedTimer>

#include <grp.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

Turncoat::Turncoat(const Support::Identity &identity, const Wire::Call &call,
                   const QByteArray &program)
{
    const QByteArray words = Wire::conversation(identity.user, call);
    int ends[2];
    if (pipe(ends) != 0)
        qFatal("There is no pipe");
    m_process = fork();
    if (m_process < 0)
        qFatal("There is no process");
    if (m_process == 0)
        turn(identity, words, program.constData(), ends[1]);
    close(ends[1]);
    m_output = ends[0];
}

Turncoat::~Turncoat()
{
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
    close(m_output);
}

bool Turncoat::waitUntilTurned(uid_t user, gid_t group)
{
    const QByteArray path = "/proc/" + QByteArray::number(m_process);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < Support::Deadline) {
        struct stat status = {};
        if (stat(path.constData(), &status) == 0 && status.st_uid == user && status.st_gid == group
            && Wire::isWelcomeIn(m_heard))
            return true;
        read(1);
    }
    return false;
}

Wire::Answer Turncoat::answer()
{
    Wire::Answer answer = Wire::answerIn(m_heard);
    while (answer == Wire::Answer::None && read(Support::Deadline))
        answer = Wire::answerIn(m_heard);
    return answer;
}

/// What the new process does. It has no time to lose between its words and its turn.
void Turncoat::turn(const Support::Identity &identity, const QByteArray &words, const char *program,
                    int output)
{
    const size_t count = static_cast<size_t>(identity.groups.size());
    if (setgroups(count, identity.groups.constData()) != 0
        || setresgid(identity.group, identity.group, identity.group) != 0
        || setresuid(identity.user, identity.user, identity.user) != 0)
        _exit(EXIT_FAILURE);

    const int connection = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = {AF_UNIX, "/run/dbus/system_bus_socket"};
    dup2(connection, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    if (connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0
        && write(connection, words.constData(), static_cast<size_t>(words.size())) == words.size())
        execl(program, program, nullptr);
    _exit(EXIT_FAILURE);
}

/// Waits for more of what the bus says. False when nothing comes.
bool Turncoat::read(int milliseconds)
{
    pollfd incoming = {m_output, POLLIN, 0};
    if (poll(&incoming, 1, milliseconds) != 1)
        return false;
    char buffer[4096];
    const ssize_t size = ::read(m_output, buffer, sizeof buffer);
    if (size > 0)
        m_heard.append(buffer, static_cast<int>(size));
    return size > 0;
}
