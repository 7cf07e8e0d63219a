// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "planning.h"

#include "forecast.h"
#include "knownpolicies.h"

Result<Plan> planFromFile(Daemon &daemon, const QString &path)
{
    const Result<DesiredState> desired = readDesiredState(path);
    if (!desired)
        return desired.failure();
    if (const auto owner = daemon.open(); !owner)
        return owner.failure();
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return snapshot.failure();
    Plan plan = planFor(*desired, *snapshot);
    plan.notes = sharedModeNotes(*snapshot, plan.steps);
    return plan;
}

QString stepsText(const QVector<Step> &steps, const Output &output)
{
    QString text;
    for (const Step &step : steps)
        text += QStringLiteral("%1: %2 -> %3\n")
                    .arg(step.name(), output.paint(step.before), output.paint(step.value));
    return text;
}

QString obstaclesText(const Plan &plan)
{
    QString text;
    for (const Failure &obstacle : plan.obstacles)
        text += Output::toText(obstacle) + QLatin1Char('\n');
    return text;
}

QJsonArray obstaclesToJson(const Plan &plan)
{
    QJsonArray result;
    for (const Failure &obstacle : plan.obstacles)
        result.append(Output::toJson(obstacle));
    return result;
}
