// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_HISTORY_H
#define GOVCTL_HISTORY_H

#include "govctl/plan.h"

#include <QDateTime>

#include <chrono>

/// What the journal tells of one write that came over the bus.
struct RecordedWrite
{
    QDateTime time;
    Step::Kind kind = Step::Kind::Policy;
    QString key;
    QString before; ///< what readers saw; only of an accepted write
    QString value; ///< what was to be written
    QString result;
    QString caller; ///< its name on the bus
    int pid = 0; ///< 0 when it is not known
    std::optional<uint> uid;
    QString program; ///< empty when it is not known
    int leftOut = 0; ///< so many writes before this one have no record

    bool isAccepted() const;

    /// Whether it was accepted, and another value than before.
    bool isChange() const;

    /// What is in a record's text as on or off; nothing when it is neither.
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

/// The records with the result @p result, or all, since the time @p since, or the journal's
/// beginning; the newest last.
Result<QVector<RecordedWrite>> read(const QString &result, const QString &since,
                                    std::chrono::milliseconds timeout);

} // namespace History

#endif
