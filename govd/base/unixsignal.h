// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_UNIXSIGNAL_H
#define GOVD_BASE_UNIXSIGNAL_H

#include <QObject>

#include <memory>

class QSocketNotifier;

/// Turns a Unix signal into an event of the main loop while the object lives.
///
/// Before and after that, the signal has its default action, and so it has in child processes:
/// exec() resets a handler, but not a mask. Signals that arrive while the loop is busy are reported
/// once. At most one object for each signal number.
class UnixSignal : public QObject
{
    Q_OBJECT

public:
    explicit UnixSignal(int number, QObject *parent = nullptr);
    ~UnixSignal() override;

Q_SIGNALS:
    void caught();

private:
    int m_number;
    int m_descriptor; ///< an eventfd, which the handler writes and the main loop reads
    std::unique_ptr<QSocketNotifier> m_notifier;
};

#endif
