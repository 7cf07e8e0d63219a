// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_COMMANDQUEUE_H
#define GOVCTL_COMMANDQUEUE_H

#include "watcher.h"

#include <QObject>
#include <QProcess>
#include <QQueue>

/// Runs a shell command for each event, one at a time and in order.
///
/// The command finds the event in GOVCTL_KIND, GOVCTL_KEY and GOVCTL_VALUE. Nothing of the event
/// becomes part of the command's text, so a name cannot be read as a command.
class CommandQueue : public QObject
{
    Q_OBJECT

public:
    /// With @p toStandardError what the command prints goes there, and standard output stays clean.
    CommandQueue(const QString &command, bool toStandardError);

    void add(const Event &event);

Q_SIGNALS:
    /// The command for the oldest event has ended. @p complaint is empty unless it failed.
    void ended(const QString &complaint);

private:
    void runNext();
    void onEnded(const QString &complaint);

    QString m_command;
    QProcess m_process;
    QQueue<Event> m_waiting;
};

#endif
