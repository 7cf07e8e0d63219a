// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "completion.h"
#include "daemon.h"
#include "request.h"

#include <QJsonArray>

ExitCode Verbs::complete(const Request &request, Output &output)
{
    // Without a daemon there are no switches; a completion reports no failure.
    const auto switchKeys = [&request]() -> QStringList {
        Daemon daemon(request.timeout);
        if (!daemon.open())
            return {};
        const Result<Daemon::Reading> reading = daemon.read({});
        return reading ? reading->switchKeys : QStringList();
    };

    const QVector<Candidate> candidates = completeCommandLine(request.arguments, switchKeys);
    QJsonArray array;
    QString text;
    for (const Candidate &candidate : candidates) {
        array.append(QJsonObject{{QStringLiteral("word"), candidate.word},
                                 {QStringLiteral("description"), candidate.description}});
        text += candidate.word + QLatin1Char('\t') + candidate.description + QLatin1Char('\n');
    }
    return output.write(ExitCode::Done, {{QStringLiteral("candidates"), array}}, text);
}
