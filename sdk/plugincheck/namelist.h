// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_NAMELIST_H
#define GOVD_PLUGINCHECK_NAMELIST_H

#include <QStringList>

/// The members of @p names that stand in it more than once.
QStringList repeated(const QStringList &names);

/// The names in order, for people.
QString enumerated(QStringList names);

#endif
