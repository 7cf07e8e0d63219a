// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "program.h"

#include "commandline.h"
#include "systembus.h"
#include "text.h"

#include <QCoreApplication>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Opens /dev/null on closed standard descriptors. Otherwise the connection to the bus could get
/// one of these numbers, and the output would be written into it.
void occupyStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1)
            (void)open("/dev/null", O_RDWR);
    }
}

/// The arguments without the program's name, which is missing where execve() got an empty list.
QStringList argumentsOf(int argc, char **argv)
{
    QStringList result;
    for (int i = 1; i < argc; ++i)
        result.append(QString::fromUtf8(argv[i]));
    return result;
}

/// Prints help or version, which are text with --json as well.
ExitCode print(const QString &text)
{
    Output output(Output::Form{});
    return output.finish(output.write(ExitCode::Done, {}, text));
}

Output::Colour colourOf(const Request &request)
{
    const QString word = request.options.value(QStringLiteral("color"));
    if (word == QLatin1String("always"))
        return Output::Colour::Always;
    return word == QLatin1String("never") ? Output::Colour::Never : Output::Colour::Auto;
}

} // namespace

int runMain(int argc, char **argv)
{
    occupyStandardDescriptors();
    // A closed pipe is then reported by write() as EPIPE, even if SIGPIPE was not ignored before.
    (void)std::signal(SIGPIPE, SIG_IGN);

    // Qt would take its own options out of the real arguments.
    int ownArgc = 1;
    char ownName[] = "govctl";
    char *ownArgv[] = {ownName, nullptr};
    const QCoreApplication application(ownArgc, ownArgv);
    QCoreApplication::setApplicationVersion(QStringLiteral(GOVD_VERSION));

    // Everything the program reads and writes is UTF-8, even where no locale says so.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif

    const ExitCode code = runProgram(argumentsOf(argc, argv));
    // Without an answer in time, the bus library's destructors could wait for it without end; the
    // completion gives up on the bus too, although it succeeds.
    if (code == ExitCode::NoAnswer || SystemBus::isGivenUp())
        std::_Exit(static_cast<int>(code));
    return static_cast<int>(code);
}

ExitCode runProgram(const QStringList &arguments)
{
    const Result<Request> request = parseCommandLine(arguments);
    if (!request) {
        Output output({asksForJson(arguments), Output::Colour::Auto, namedVerb(arguments)});
        return output.finish(output.fail(request.failure()));
    }
    if (request->has(QStringLiteral("help")))
        return print(helpText(request->verb));
    if (request->has(QStringLiteral("version")))
        return print(
            QStringLiteral("%1 %2\n").arg(programName(), QCoreApplication::applicationVersion()));

    Output output({request->isJson(), colourOf(*request), request->verb->name});
    return output.finish(request->verb->run(*request, output));
}
