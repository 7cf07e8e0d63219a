// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_TROUBLE_H
#define GOVD_TESTS_SUPPORT_TROUBLE_H

#include "simulator/fault.h"

#include <QMetaType>
#include <QString>
#include <QVector>

namespace Support {

/// What can be wrong with a service when the daemon calls it, and the D-Bus error that this gives.
struct Trouble
{
    QByteArray name; ///< of the row in a table of tests
    Simulator::Fault fault; ///< none when the service is absent
    QString errorName;
    QString errorMessage;

    bool isAbsence() const { return fault.kind == Simulator::Fault::None; }

    /// All kinds of trouble that the service @p service can be in.
    static QVector<Trouble> of(const QString &service);

    /// Adds a row with a trouble for each kind to the table of the current test.
    static void addRows(const QString &service);
};

/// Answers that are late or of a wrong type, but no errors.
struct Oddity
{
    QByteArray name;
    Simulator::Fault fault;

    static QVector<Oddity> all();
    static void addRows();
};

} // namespace Support

Q_DECLARE_METATYPE(Support::Trouble)
Q_DECLARE_METATYPE(Support::Oddity)

#endif
