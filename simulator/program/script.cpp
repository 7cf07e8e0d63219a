// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/script.h"

#include "commandline/text.h"
#include "commandline/usage.h"
#include "simulator/program/commandline.h"

#include <QFile>
#include <QProcess>

namespace Simulator {
namespace {

Result<ScriptLine> readLine(int number, const QString &text)
{
    // A quotation that does not end would end with the line, unnoticed.
    if (text.count(QLatin1Char('"')) % 2 != 0)
        return usageFailure(Text::tr("a quotation mark is missing"));
    ScriptLine line{number, text, QProcess::splitCommand(text), {}};
    if (line.words.value(0) == QLatin1String("govd-sim"))
        line.words.removeFirst();
    if (line.words.isEmpty())
        return usageFailure(Text::tr("no verb given; see govd-sim --help"));
    if (line.isForGovctl())
        return line;
    const Result<Request> request = parseCommandLine(line.words);
    if (!request)
        return request.failure();
    if (!request->verb || !request->verb->isForScripts || request->has(QStringLiteral("watch")))
        return usageFailure(Text::tr("this cannot stand in a script"));
    line.request = *request;
    return line;
}

} // namespace

Result<QVector<ScriptLine>> readScript(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return usageFailure(Text::tr("cannot read the script %1 (%2); check its name and rights")
                                .arg(quoted(path), file.errorString()));
    QVector<ScriptLine> lines;
    int number = 0;
    for (const QString &raw : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        const QString text = raw.trimmed();
        ++number;
        if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
            continue;
        const Result<ScriptLine> line = readLine(number, text);
        if (!line)
            return atLine(path, number, text, line.failure());
        lines.append(*line);
    }
    return lines;
}

Failure atLine(const QString &path, int number, const QString &text, Failure failure)
{
    failure.message =
        Text::tr("%1, line %2, \"%3\": %4")
            .arg(printable(path), QString::number(number), printable(text), failure.message);
    return failure;
}

} // namespace Simulator
