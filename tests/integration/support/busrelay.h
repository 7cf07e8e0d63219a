// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_BUSRELAY_H
#define GOVD_TESTS_SUPPORT_BUSRELAY_H

#include <QByteArray>
#include <QString>

#include <mutex>
#include <thread>

namespace Support {

/// A way to the system bus on which one client's messages can be held up or spoilt. It passes on
/// all else as it is, in both directions.
///
/// The bus takes this process for the client's.
class BusRelay
{
    Q_DISABLE_COPY(BusRelay)

public:
    BusRelay();
    ~BusRelay();

    /// What the client takes for the address of the bus.
    QString address() const;

    /// Holds up what the client sends from the message on that contains @p text, until release().
    /// To be called before the client connects.
    void holdAt(const QByteArray &text);

    /// Waits until there is something to hold up.
    [[nodiscard]] bool waitUntilHeld() const;

    void release();

    /// Replaces each @p text that the client sends by @p other, of the same length. To be called
    /// before the client connects.
    void spoil(const QByteArray &text, const QByteArray &other);

private:
    void run();
    bool passToBus(int client, int bus);
    void wake();

    int m_listener;
    int m_wake;
    QByteArray m_spoilt;
    QByteArray m_other;
    mutable std::mutex m_mutex; // guards what follows
    QByteArray m_holdAt;
    QByteArray m_held;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace Support

#endif
