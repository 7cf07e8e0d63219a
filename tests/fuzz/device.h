// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_DEVICE_H
#define GOVD_TESTS_FUZZ_DEVICE_H

#include "policymanager.h"
#include "tests/fuzz/peer.h"

#include <vector>

/// The daemon in this process, on the bus, with a client that is root and with the log service,
/// which share no code with it.
class Device
{
public:
    Device();

    /// A call of the daemon's interface @p interface ("Policy" or "Switch"), without arguments yet.
    Message call(const char *interface, const char *member);

    /// The call that reads @p key.
    Message question(const char *interface, const QByteArray &key);

    /// Sends @p calls at once and waits for the last reply. Returns the replies, errors too, in the
    /// order of the calls; null for a call that has not been answered by then.
    std::vector<Message> exchange(const std::vector<const Message *> &calls);

    /// The texts of the audit events since forget().
    const QByteArrayList &events() const { return m_events; }

    /// The signals since forget(): "PolicyChanged KEY VALUE", the value as RandomValue describes.
    const QByteArrayList &announcements() const { return m_announcements; }

    void forget();

private:
    void take(sd_bus_message *message);
    void takeAnnouncement(sd_bus_message *message, const char *name);

    PolicyManager m_manager{nullptr};
    Peer m_peer;
    QByteArrayList m_events;
    QByteArrayList m_announcements;
};

#endif
