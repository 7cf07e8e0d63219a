// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_PLUGINCHECK_NAMELIST_H
#define GOVD_PLUGINCHECK_NAMELIST_H

#include <QStringList>

/// The names that @p names holds more than once.
QStringList repeated(const QStringList &names);

/// The names sorted and joined by commas; "nothing" for none.
QString enumerated(QStringList names);

#endif
