// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/systembus.h"
#include "govctl/program.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Fills the places of closed standard descriptors. Otherwise the connection to the bus could take
/// one, and a result would be written into it.
void occupyStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1)
            (void)open("/dev/null", O_RDWR);
    }
}

/// The arguments. A caller may leave out even the program's name, with which they begin.
QStringList argumentsOf(int argc, char **argv)
{
    QStringList result;
    for (int i = 1; i < argc; ++i)
        result.append(QString::fromUtf8(argv[i]));
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    // A reader that leaves shows as an error of the write, however this process was started.
    std::signal(SIGPIPE, SIG_IGN);

    int ownArgc = 1;
    char name[] = "govctl";
    char *ownArgv[] = {name, nullptr};
    QCoreApplication application(ownArgc, ownArgv);
    QCoreApplication::setApplicationVersion(QStringLiteral(GOVCTL_VERSION));

    // Everything this program reads and writes is UTF-8, even where no locale says so.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));

    const ExitCode code = runProgram(argumentsOf(argc, argv));
    // Who did not answer in time could keep the bus library waiting in an orderly end as well, even
    // that of a verb that can do without the answer.
    if (code == ExitCode::NoAnswer || SystemBus::isGivenUp())
        std::_Exit(static_cast<int>(code));
    return static_cast<int>(code);
}
