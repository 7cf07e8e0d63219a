// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSPROPERTIES_H
#define SYSTEMSETTINGS_UDISKSPROPERTIES_H

#include <QMap>
#include <QStringList>
#include <QVariantMap>

namespace UDisks {

/// The interfaces of one object, by name, with their properties. As received or as read.
using Interfaces = QMap<QString, QVariantMap>;

/// Whether anything is ever asked about objects with the interface @p name.
bool isWanted(const QString &name);

/// Whether the property @p name of @p interface is one that is read.
bool isWanted(const QString &interface, const QString &name);

/// Returns those of the @p received properties of @p interface that are wanted and have their
/// right type, as plain values: texts, booleans and, for lists of paths, lists of texts. The
/// others are left out. The received values cannot be read a second time.
QVariantMap readProperties(const QString &interface, const QVariantMap &received);

} // namespace UDisks

#endif
