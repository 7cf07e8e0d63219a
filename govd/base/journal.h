// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_JOURNAL_H
#define GOVD_BASE_JOURNAL_H

#include <QByteArray>

class QString;

/// By this the journal's catalogue, and whoever looks for records of writes, knows them.
inline constexpr char WriteMessageId[] = "16b3c2249be6438e91cdc01023e34dbd";

/// A record of named fields for the system's journal, which keeps it beside the lines of the log.
///
/// It goes to the journal's socket in the journal's own protocol and not through libsystemd, which
/// waits without end when nobody reads there.
class JournalRecord
{
public:
    /// What to do when the journal takes no more.
    enum Patience {
        Drop, ///< nothing is sent
        Wait, ///< for a second at most; then nothing is sent
    };

    /// Looks whether the system has a journal. To be called once, before anything else: where there
    /// is none then, and in a build without libsystemd, nothing is ever sent.
    static void findJournal();

    static bool hasJournal();

    JournalRecord();

    /// Adds a field. Of a long text it has the first KiB, with a mark.
    void add(const char *name, const QString &text);

    /// Whether it was sent.
    bool send(Patience patience) const;

private:
    QByteArray m_fields;
};

#endif
