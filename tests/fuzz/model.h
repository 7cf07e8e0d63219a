// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_MODEL_H
#define GOVD_TESTS_FUZZ_MODEL_H

#include <QByteArrayList>
#include <QHash>

#include <optional>

/// The expected values of the daemon, computed without its code, with two access switches: "camera"
/// governs one policy, "radio" two. Values have the form of RandomValue::described().
class Model
{
public:
    struct Policy
    {
        QByteArray value;
        bool reading = false;
    };

    /// The policy as it is stored; nothing when it has no value.
    std::optional<Policy> policy(const QByteArray &key) const;
    void setPolicy(const QByteArray &key, const Policy &policy) { m_policies.insert(key, policy); }

    /// Whether there is a switch that can forbid the policy.
    static bool isGoverned(const QByteArray &key);

    bool isSwitch(const QByteArray &key) const { return m_switches.contains(key); }
    bool isOn(const QByteArray &key) const { return m_switches.value(key); }
    void setSwitch(const QByteArray &key, bool value) { m_switches.insert(key, value); }

    /// The replies to reads of @p key; empty where none comes.
    std::optional<QByteArray> policyAnswer(const QByteArray &key) const;
    QByteArray switchAnswer(const QByteArray &key) const;
    static QByteArray typesAnswer(const QByteArray &key);

    /// The signals that follow when a policy, or a switch, takes another value than it has.
    QByteArrayList policySignals(const QByteArray &key, bool reading) const;
    QByteArrayList switchSignals(const QByteArray &key, bool value) const;

private:
    bool isForced(const QByteArray &key) const;

    QHash<QByteArray, Policy> m_policies;
    QHash<QByteArray, bool> m_switches{{"camera", true}, {"radio", true}};
};

#endif
