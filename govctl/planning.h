// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLANNING_H
#define GOVCTL_PLANNING_H

#include "govctl/output.h"
#include "govctl/plan.h"

/// Opens @p daemon and finds out what the file @p path wants changed.
Result<Plan> planFromFile(Daemon &daemon, const QString &path);

/// Steps as lines, one each: what they are about, from which value, to which.
QString stepsText(const QVector<Step> &steps, const Output &output);

QString obstaclesText(const Plan &plan);
QJsonArray obstaclesToJson(const Plan &plan);

#endif
