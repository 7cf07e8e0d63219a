// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SYSTEMSETTINGS_UDISKSREMINDERS_H
#define SYSTEMSETTINGS_UDISKSREMINDERS_H

#include <QHash>
#include <QObject>
#include <QTimer>

#include <chrono>

namespace UDisks {

/// Remembers which file systems were to be unmounted and may still be mounted, and reminds of each:
/// after two seconds, then after twice as long each time, to a minute.
///
/// There is one for all clients of the process, because the one that was asked to unmount need not
/// be the one whose announcements somebody follows.
class Reminders : public QObject
{
    Q_OBJECT

public:
    static Reminders &instance();

    /// The object at @p path could not be unmounted. Returns whether this is the first failure
    /// since it was unmounted.
    bool noteFailure(const QString &path);

    /// The object at @p path has been unmounted from one place, and nobody has told yet whether
    /// there are others. Begins anew.
    void noteSuccess(const QString &path);

    /// The object at @p path is not mounted.
    void end(const QString &path);

    /// Nothing is known of any object any more.
    void endAll();

Q_SIGNALS:
    /// It is time to look at the object at @p path. Whoever knows that its file system is still
    /// mounted sets @p isMounted; when nobody does, this was the last reminder.
    void due(const QString &path, bool &isMounted);

private:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;

    struct Reminder
    {
        Milliseconds pause;
        Clock::time_point due;
        bool hasFailed = false;
    };

    Reminders();
    Reminder &begin(const QString &path);
    void remind();
    void startTimer();

    QHash<QString, Reminder> m_reminders;
    QTimer m_timer; ///< to the reminder that is due first
};

} // namespace UDisks

#endif
