// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_WRITERECORD_H
#define GOVD_MANAGER_WRITERECORD_H

#include <QString>
#include <QVariant>

#include <optional>

class JournalRecord;

/// A value as audit events and records have it.
QString valueText(const QVariant &value);

/// What the journal is told of one write that came over the bus: who wanted which value, and what
/// became of that. Without a caller, as for the daemon's own writes, and on a system without a
/// journal, it is told nothing. Each record tells how many before it could not be sent.
class WriteRecord
{
public:
    enum Kind {
        Policy,
        Switch,
    };

    enum Refusal {
        Denied, ///< a caller without rights: of these records only so many are sent in so much time
        Locked,
        CannotBeHeld,
        NotSaved,
        NoPlugin,
        RefusedByPlugin,
    };

    WriteRecord(Kind kind, const QString &key, const QVariant &newValue);

    /// @p pid is 0, and @p uid is missing, if the bus does not know any more.
    void setCaller(const QString &busName, int pid, std::optional<uint> uid);

    /// Tells that the value was accepted.
    void accept(const QString &oldText) const;

    /// Tells that it was refused, and why; false, for the caller of the function that refuses.
    bool refuse(Refusal reason) const;

private:
    JournalRecord withResult(const QString &result, int priority) const;

    Kind m_kind;
    QString m_key;
    QVariant m_newValue;
    QString m_caller;
    int m_pid = 0;
    std::optional<uint> m_uid;
    QString m_program;
};

#endif
