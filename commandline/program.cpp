// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/program.h"

#include "commandline/output.h"
#include "commandline/systembus.h"
#include "commandline/text.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Fills the places of closed standard descriptors. Otherwise a connection to the bus could take
/// one, and what is printed would be written into it.
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

int runMain(int argc, char **argv, const char *name, ExitCode (*run)(const QStringList &))
{
    occupyStandardDescriptors();
    // A reader that leaves shows as an error of the write, however this process was started.
    (void)std::signal(SIGPIPE, SIG_IGN);

    // Qt looks for options of its own in what it is given.
    int ownArgc = 1;
    QByteArray ownName(name);
    char *ownArgv[] = {ownName.data(), nullptr};
    const QCoreApplication application(ownArgc, ownArgv);
    QCoreApplication::setApplicationVersion(QStringLiteral(GOVD_VERSION));

    // Everything the program reads and writes is UTF-8, even where no locale says so.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));

    const ExitCode code = run(argumentsOf(argc, argv));
    // Who did not answer in time could keep the bus library waiting in an orderly end as well, even
    // that of a verb that can do without the answer.
    if (code == ExitCode::NoAnswer || SystemBus::isGivenUp())
        std::_Exit(static_cast<int>(code));
    return static_cast<int>(code);
}

ExitCode printHelp(const QString &text)
{
    Output output(false, {});
    return output.finish(output.write(ExitCode::Done, {}, text));
}

ExitCode printVersion()
{
    return printHelp(
        QStringLiteral("%1 %2\n").arg(programName(), QCoreApplication::applicationVersion()));
}
