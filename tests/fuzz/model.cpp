// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/fuzz/model.h"

namespace {

QByteArray described(bool value)
{
    return value ? "vb<b1 >" : "vb<b0 >";
}

/// The policies that a switch governs, in the order of its list.
QByteArrayList governed(const QByteArray &key)
{
    if (key == "camera")
        return {"CameraEnabled"};
    return key == "radio" ? QByteArrayList{"NfcEnabled", "BluetoothEnabled"} : QByteArrayList();
}

} // namespace

std::optional<Model::Policy> Model::policy(const QByteArray &key) const
{
    const auto found = m_policies.find(key);
    return found == m_policies.end() ? std::nullopt : std::optional(*found);
}

bool Model::isGoverned(const QByteArray &key)
{
    return governed("camera").contains(key) || governed("radio").contains(key);
}

std::optional<QByteArray> Model::policyAnswer(const QByteArray &key) const
{
    if (isForced(key))
        return described(false);
    const std::optional<Policy> stored = policy(key);
    return stored ? std::optional(stored->value) : std::nullopt;
}

QByteArray Model::switchAnswer(const QByteArray &key) const
{
    return described(isOn(key));
}

QByteArray Model::typesAnswer(const QByteArray &key)
{
    if (key == "camera")
        return "ai<i1 >";
    return key == "radio" ? "ai<ia i3 >" : "ai<>";
}

QByteArrayList Model::policySignals(const QByteArray &key, bool reading) const
{
    return {"PolicyChanged " + key + ' ' + described(reading && !isForced(key))};
}

QByteArrayList Model::switchSignals(const QByteArray &key, bool value) const
{
    QByteArrayList result;
    for (const QByteArray &each : governed(key)) {
        const bool isAllowed = value && policy(each).value_or(Policy()).reading;
        result.append("PolicyChanged " + each + ' ' + described(isAllowed));
    }
    return result << "SwitchChanged " + key + ' ' + described(value);
}

bool Model::isForced(const QByteArray &key) const
{
    for (auto each = m_switches.begin(); each != m_switches.end(); ++each) {
        if (!each.value() && governed(each.key()).contains(key))
            return true;
    }
    return false;
}
