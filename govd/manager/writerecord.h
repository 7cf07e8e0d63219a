// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_WRITERECORD_H
#define GOVD_MANAGER_WRITERECORD_H

#include <QString>
#include <QVariant>

#include <optional>

class JournalRecord;

/// @p value as text, as in audit events and journal records.
QString valueText(const QVariant &value);

/// The journal's record of one write that came over the bus: caller, value and result. Nothing is
/// sent for the daemon's own writes, which have no caller, or without a journal. A record holds the
/// number of those before it that were left out.
class WriteRecord
{
public:
    enum Kind {
        Policy,
        Switch,
    };

    enum Refusal {
        Denied, ///< a caller without rights; limited like log lines, see Log::Burst
        Locked,
        CannotBeHeld,
        NotSaved,
        NoPlugin,
        RefusedByPlugin,
    };

    WriteRecord(Kind kind, const QString &key, const QVariant &newValue);

    /// @p pid is 0, and @p uid is empty, when the bus no longer knows the caller.
    void setCaller(const QString &busName, int pid, std::optional<uint> uid);

    /// Sends the record of an accepted value.
    void accept(const QString &oldText) const;

    /// Sends the record of a refused value. Always false, for the refusing function to return.
    bool refuse(Refusal reason) const;

private:
    JournalRecord withResult(const QString &result, int priority) const;

    Kind m_kind;
    QString m_key;
    QVariant m_newValue;
    QString m_caller;
    int m_pid = 0;
    std::optional<uint> m_uid;
    QString m_program; ///< the path; empty if it may not be read
    QString m_command; ///< the process's own name, without a path
};

#endif
