// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_HISTORY_H
#define GOVCTL_HISTORY_H

#include "plan.h"

#include <QDateTime>

#include <chrono>

/// The journal's record of one write over the bus.
struct RecordedWrite
{
    QDateTime time;
    Step::Kind kind = Step::Kind::Policy;
    QString key;
    QString before; ///< the effective value before; only of an accepted write
    QString value; ///< the value that the caller wrote
    QString result;
    QString caller; ///< its unique name on the bus
    int pid = 0; ///< 0 when it is not known
    std::optional<uint> uid;
    QString program; ///< its path; empty when it is not known
    QString command; ///< the process's own name, where the program is not known
    int leftOut = 0; ///< number of writes before this one that have no record

    bool isAccepted() const;

    /// Whether it was accepted and changed the value.
    bool isChange() const;

    /// A value of a record as a boolean; empty when it is none.
    static std::optional<bool> parsed(const QString &text);

    // For people.
    QString when() const;
    QString user() const;
    QString programText() const;
    QString name() const;
    QString changeText() const;

    QJsonObject toJson() const;
};

namespace History {

/// The records with the result @p result (all when it is empty) since the time @p since (the
/// journal's beginning when it is empty), the newest last.
Result<QVector<RecordedWrite>> read(const QString &result, const QString &since,
                                    std::chrono::milliseconds timeout);

} // namespace History

#endif
