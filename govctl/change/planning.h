// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLANNING_H
#define GOVCTL_PLANNING_H

#include "output.h"
#include "plan.h"

/// Opens @p daemon and plans the changes for the file @p path.
Result<Plan> planFromFile(Daemon &daemon, const QString &path);

/// One line for each step: its policy or switch, the old value and the new one.
QString stepsText(const QVector<Step> &steps, const Output &output);

QString obstaclesText(const Plan &plan);
QJsonArray obstaclesToJson(const Plan &plan);

#endif
