// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/terminal.h"
#include "commandline/text.h"
#include "simulator/program/script.h"

#include <QProcess>

#include <unistd.h>

namespace Simulator {
namespace {

/// Takes what govctl said last out of @p errors, without its name in front.
QString takeLastWords(QByteArray &errors)
{
    const QByteArray prefix = "govctl: ";
    const int start = errors.lastIndexOf('\n', -2) + 1;
    QByteArray line = errors.mid(start).trimmed();
    errors.truncate(start);
    if (line.startsWith(prefix))
        line.remove(0, prefix.size());
    return QString::fromUtf8(line);
}

/// The words of a line for govctl, with the options of the script in front: its own come later and
/// win.
QStringList argumentsOf(const ScriptLine &line, const Request &script)
{
    QStringList options;
    if (script.isJson())
        options << QStringLiteral("--json");
    const QString timeout = QStringLiteral("timeout");
    if (script.has(timeout))
        options << QStringLiteral("--timeout") << script.options.value(timeout);
    return options + line.words.mid(1);
}

Outcome runGovctl(const ScriptLine &line, const Request &script)
{
    QProcess process;
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    process.start(QStringLiteral("govctl"), argumentsOf(line, script));
    if (!process.waitForStarted())
        return Failure{ExitCode::Usage,
                       QStringLiteral("no-govctl"),
                       Text::tr("govctl cannot be started; install it where PATH leads"),
                       {}};
    process.waitForFinished(-1);
    QByteArray errors = process.readAllStandardError();
    const bool hasEnded = process.exitStatus() == QProcess::NormalExit;
    const bool isDone = hasEnded && process.exitCode() == 0;
    QString words;
    if (!isDone)
        words = errors.isEmpty() ? Text::tr("exit code %1").arg(process.exitCode())
                                 : takeLastWords(errors);
    // There is no place left to complain about a failure here.
    Terminal::write(STDERR_FILENO, errors);
    if (isDone)
        return std::nullopt;
    const ExitCode code = hasEnded ? static_cast<ExitCode>(process.exitCode()) : ExitCode::No;
    return Failure{code, QStringLiteral("govctl"), words, {}};
}

Outcome runLine(const ScriptLine &line, const Request &script)
{
    if (line.isForGovctl())
        return runGovctl(line, script);
    Request request = line.request;
    if (!request.has(QStringLiteral("timeout")))
        request.timeout = script.timeout;
    Output output(script.isJson() || request.isJson(), request.verb->name);
    return request.verb->run(request, output);
}

} // namespace

Outcome Verbs::run(const Request &request, Output &output)
{
    const QString path = request.arguments.first();
    const Result<QVector<ScriptLine>> lines = readScript(path);
    if (!lines)
        return lines.failure();
    for (const ScriptLine &line : *lines) {
        const QString number = QString::number(line.number).rightJustified(3);
        output.write(ExitCode::Done,
                     {{QStringLiteral("line"), line.number}, {QStringLiteral("text"), line.text}},
                     output.paint(Output::Style::Faint, number) + QStringLiteral("  ")
                         + printable(line.text) + QLatin1Char('\n'));
        if (const Outcome failure = runLine(line, request))
            return atLine(path, line.number, line.text, *failure);
    }
    return std::nullopt;
}

} // namespace Simulator
