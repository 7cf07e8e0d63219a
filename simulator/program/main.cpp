// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/systembus.h"
#include "simulator/program/program.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Fills the places of closed standard descriptors. Otherwise a connection to the bus could take
/// one, and the log would be written into it.
void occupyStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1)
            (void)open("/dev/null", O_RDWR);
    }
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    // A reader that leaves shows as an error of the write, however this process was started.
    std::signal(SIGPIPE, SIG_IGN);

    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromUtf8(argv[i]));

    // Qt looks for options of its own in what it is given.
    int ownArgc = 1;
    char name[] = "govd-sim";
    char *ownArgv[] = {name, nullptr};
    QCoreApplication application(ownArgc, ownArgv);
    QCoreApplication::setApplicationVersion(QStringLiteral(GOVD_SIM_VERSION));

    // Everything this program reads and writes is UTF-8, even where no locale says so.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const ExitCode code = Simulator::runProgram(arguments);
    // Who did not answer in time could keep the bus library waiting in an orderly end as well.
    if (code == ExitCode::NoAnswer || SystemBus::isGivenUp())
        std::_Exit(static_cast<int>(code));
    return static_cast<int>(code);
}
