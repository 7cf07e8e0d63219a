// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_POLICYTYPES_H
#define GOVD_BASE_POLICYTYPES_H

#include <QMetaEnum>
#include <QString>

#include <pellorapolicy/policyvalue.h>

using PolicyType = Pellora::PolicyValue::PolicyType;

/// The policies that the daemon acts on, by number. Their keys come from the platform's
/// enumeration.
namespace PolicyTypes {

inline constexpr auto None = static_cast<PolicyType>(0);
inline constexpr auto Camera = static_cast<PolicyType>(1);
inline constexpr auto InternetSharing = static_cast<PolicyType>(8);
inline constexpr auto UsbDeveloperMode = static_cast<PolicyType>(13);
inline constexpr auto UsbMediaTransfer = static_cast<PolicyType>(14);
inline constexpr auto Microphone = static_cast<PolicyType>(20);
inline constexpr auto Browser = static_cast<PolicyType>(29);
inline constexpr auto MemoryCard = static_cast<PolicyType>(32);
inline constexpr auto UsbStorage = static_cast<PolicyType>(33);
inline constexpr auto VoiceCalls = static_cast<PolicyType>(35);
inline constexpr auto Messages = static_cast<PolicyType>(36);
inline constexpr auto DeveloperShell = static_cast<PolicyType>(39);
inline constexpr auto UserReport = static_cast<PolicyType>(41);
inline constexpr auto DeveloperMode = static_cast<PolicyType>(42);
inline constexpr auto UsbDevices = static_cast<PolicyType>(45);

/// The platform's enumeration of policies, looked up in its meta-object by each call.
QMetaEnum enumeration();

} // namespace PolicyTypes

/// Returns the key under which the platform lists @p type, or a null text when it lists none.
QString typeToKey(Pellora::PolicyValue::PolicyType type);

/// Returns the policy that the platform lists under @p key (compared exactly), or 0.
Pellora::PolicyValue::PolicyType keyToType(const QString &key);

#endif
