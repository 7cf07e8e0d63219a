// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef PELLORAPOLICY_POLICYVALUE_H
#define PELLORAPOLICY_POLICYVALUE_H

#include <QObject>

namespace Pellora {

/// Every policy of the platform.
///
/// The keys of the enumeration name the policies on the bus and in files. They are read at run time
/// through the meta-object, so a platform may add values at the end without a rebuild of the
/// programs that read them. The numbers are dense from 0 and never change their meaning.
class Q_DECL_EXPORT PolicyValue
{
    Q_GADGET

public:
    enum PolicyType : int {
        NoPolicy = 0, ///< no policy; the daemon takes unknown keys for it
        CameraEnabled = 1,
        LocationEnabled = 2,
        BluetoothEnabled = 3,
        WlanEnabled = 4,
        MobileDataEnabled = 5,
        FlightModeEnabled = 6,
        RoamingEnabled = 7,
        InternetSharingEnabled = 8,
        VpnEnabled = 9,
        NfcEnabled = 10,
        ProxySettingsEnabled = 11,
        DateTimeSettingsEnabled = 12,
        UsbDeveloperModeEnabled = 13,
        UsbMediaTransferEnabled = 14,
        UsbMassStorageEnabled = 15,
        UsbNetworkEnabled = 16,
        UsbDiagnosticsEnabled = 17,
        UsbHostEnabled = 18,
        UsbAccessoryEnabled = 19,
        MicrophoneEnabled = 20,
        ScreenshotsEnabled = 21,
        ScreenRecordingEnabled = 22,
        ClipboardSharingEnabled = 23,
        SystemUpdatesEnabled = 24,
        SideLoadingEnabled = 25,
        ApplicationInstallationEnabled = 26,
        AccountCreationEnabled = 27,
        FactoryResetEnabled = 28,
        BrowserEnabled = 29,
        BackupEnabled = 30,
        CloudSyncEnabled = 31,
        MemoryCardEnabled = 32,
        UsbStorageEnabled = 33,
        ContactsExportEnabled = 34,
        VoiceCallsEnabled = 35,
        MessagesEnabled = 36,
        MobileNetworkSettingsEnabled = 37,
        DeviceLockSettingsEnabled = 38,
        DeveloperShellEnabled = 39,
        CertificateInstallationEnabled = 40,
        UserReportExportEnabled = 41,
        DeveloperModeEnabled = 42,
        LanguageSettingsEnabled = 43,
        FingerprintEnabled = 44,
        UsbDevicesEnabled = 45,
    };
    Q_ENUM(PolicyType)
};

} // namespace Pellora

#endif
