// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_GOVCTL_RESULTS_H
#define GOVD_TESTS_GOVCTL_RESULTS_H

#include <QJsonObject>

/// The policy @p key in the result of "list" or "dump"; empty if it is not there.
QJsonObject policyIn(const QJsonObject &result, const QString &key);

/// The policy in the result of a verb that is about one.
QJsonObject policy(const QJsonObject &result);

#endif
