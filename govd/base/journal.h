// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_JOURNAL_H
#define GOVD_BASE_JOURNAL_H

#include <QByteArray>

class QString;

/// MESSAGE_ID of the records of writes, by which the journal's catalogue and searches find them.
inline constexpr char WriteMessageId[] = "16b3c2249be6438e91cdc01023e34dbd";

/// A record of named fields for systemd's journal.
///
/// It goes to the journal's socket in the native protocol, because sd_journal_send() blocks without
/// a limit when the journal does not read.
class JournalRecord
{
public:
    /// What send() does when the journal's socket is full.
    enum WhenFull {
        Drop, ///< sends nothing
        Wait, ///< waits for a second at most, then sends nothing
    };

    /// Opens the socket if the system has a journal. Call it once, before any record is made.
    /// Without a journal at that time, or without libsystemd in the build, nothing is ever sent.
    static void findJournal();

    static bool hasJournal();

    JournalRecord();

    /// Adds a field; @p text is cut at 1 KiB, with a mark.
    void add(const char *name, const QString &text);

    /// Sends the record. False when it could not be sent.
    bool send(WhenFull whenFull) const;

private:
    QByteArray m_fields;
};

#endif
