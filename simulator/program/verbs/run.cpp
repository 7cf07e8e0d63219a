// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/text.h"
#include "simulator/program/script.h"

#include <QProcess>

namespace Simulator {
namespace {

/// What govctl said last of its failure, without its name in front.
QString lastWords(const QString &errors)
{
    const QString prefix = QStringLiteral("govctl: ");
    const QString line = errors.trimmed().section(QLatin1Char('\n'), -1);
    return line.startsWith(prefix) ? line.mid(prefix.size()) : line;
}

Outcome runGovctl(const ScriptLine &line, bool isJson)
{
    QStringList arguments = line.words.mid(1);
    if (isJson)
        arguments.prepend(QStringLiteral("--json"));
    QProcess process;
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    process.start(QStringLiteral("govctl"), arguments);
    if (!process.waitForStarted())
        return Failure{ExitCode::Usage,
                       QStringLiteral("no-govctl"),
                       Text::tr("govctl cannot be started; install it where PATH leads"),
                       {}};
    process.waitForFinished(-1);
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    const bool hasEnded = process.exitStatus() == QProcess::NormalExit;
    if (hasEnded && process.exitCode() == 0)
        return std::nullopt;
    const ExitCode code = hasEnded ? static_cast<ExitCode>(process.exitCode()) : ExitCode::No;
    const QString words =
        errors.isEmpty() ? Text::tr("exit code %1").arg(process.exitCode()) : lastWords(errors);
    return Failure{code, QStringLiteral("govctl"), words, {}};
}

Outcome runLine(const ScriptLine &line, const Request &script)
{
    if (line.isForGovctl())
        return runGovctl(line, script.isJson());
    Request request = line.request;
    if (!request.has(QStringLiteral("timeout")))
        request.timeout = script.timeout;
    Console console(script.isJson() || request.isJson(), request.verb->name);
    return request.verb->run(request, console);
}

} // namespace

Outcome Verbs::run(const Request &request, Console &console)
{
    const QString path = request.arguments.first();
    const Result<QVector<ScriptLine>> lines = readScript(path);
    if (!lines)
        return lines.failure();
    for (const ScriptLine &line : *lines) {
        const QString number = QString::number(line.number).rightJustified(3);
        console.write({{QStringLiteral("line"), line.number}, {QStringLiteral("text"), line.text}},
                      console.paint(Console::Style::Faint, number) + QStringLiteral("  ")
                          + printable(line.text) + QLatin1Char('\n'));
        if (const Outcome failure = runLine(line, request))
            return atLine(path, line.number, line.text, *failure);
    }
    return std::nullopt;
}

} // namespace Simulator
