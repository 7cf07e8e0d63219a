// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_PROGRAM_FACTS_H
#define GOVD_SIMULATOR_PROGRAM_FACTS_H

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <QVector>

namespace Simulator {

/// A kind of fact about the device that can be asked for.
struct FactRow
{
    QString word;
    QString name; ///< how the help calls the name of the thing it is about; empty for none
    QStringList names; ///< the things it can be about; empty when any name will do
    QStringList values; ///< what it can be; empty for a number
    QString otherwise; ///< what it is of a thing that the state does not mention
};

/// What can be asked about the device, in alphabetical order.
const QVector<FactRow> &factRows();

/// The row with this word, or null.
const FactRow *findFactRow(const QString &word);

/// What is so, by "WORD" or "WORD NAME"; values as in the rows.
using Facts = QMap<QString, QString>;

/// Reads the facts out of a state of the device.
Facts factsOf(const QJsonObject &state);

/// What @p facts say of @p key, mentioned there or not.
QString valueOf(const Facts &facts, const QString &key);

/// A fact that is another one than before.
struct Change
{
    QString key;
    QString before;
    QString now;
};

/// What differs from @p before to @p now.
QVector<Change> changesBetween(const Facts &before, const Facts &now);

} // namespace Simulator

#endif
