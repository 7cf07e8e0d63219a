// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_INTROSPECTION_H
#define GOVD_SIMULATOR_INTROSPECTION_H

#include "simulator/interface.h"

#include <QStringList>

namespace Simulator {

/// Describes an object with these @p interfaces and the names of its @p children in the XML
/// format of D-Bus introspection.
QString describeObject(const QVector<Interface> &interfaces, const QStringList &children);

/// Splits a D-Bus signature into its single complete types.
QStringList completeTypes(const QString &signature);

} // namespace Simulator

#endif
