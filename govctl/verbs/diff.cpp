// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "planning.h"
#include "request.h"

#include <algorithm>

ExitCode Verbs::diff(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    const Result<Plan> plan = planFromFile(daemon, request.arguments.constFirst());
    if (!plan)
        return output.fail(plan.failure());
    const QJsonObject result{{QStringLiteral("same"), plan->steps.isEmpty()},
                             {QStringLiteral("kept"), plan->kept.size()},
                             {QStringLiteral("changes"), toJson(plan->steps)},
                             {QStringLiteral("obstacles"), obstaclesToJson(*plan)}};
    QString text = stepsText(plan->steps, output) + obstaclesText(*plan);
    const auto unknown =
        std::find_if(plan->obstacles.begin(), plan->obstacles.end(),
                     [](const Failure &obstacle) { return obstacle.code == ExitCode::Usage; });
    if (unknown != plan->obstacles.end())
        return output.fail({ExitCode::Usage,
                            unknown->name,
                            QStringLiteral("the file names what this device does not have"),
                            {}},
                           result, text);
    if (text.isEmpty())
        text = QStringLiteral("the device is as the file says\n");
    const bool isSame = plan->steps.isEmpty() && plan->obstacles.isEmpty();
    return output.write(isSame ? ExitCode::Done : ExitCode::No, result, text);
}
