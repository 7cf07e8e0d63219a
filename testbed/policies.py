# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The policies of the platform."""

# Each at the place of its number.
KEYS = """
    NoPolicy CameraEnabled LocationEnabled BluetoothEnabled WlanEnabled MobileDataEnabled
    FlightModeEnabled RoamingEnabled InternetSharingEnabled VpnEnabled NfcEnabled
    ProxySettingsEnabled DateTimeSettingsEnabled UsbDeveloperModeEnabled UsbMediaTransferEnabled
    UsbMassStorageEnabled UsbNetworkEnabled UsbDiagnosticsEnabled UsbHostEnabled
    UsbAccessoryEnabled MicrophoneEnabled ScreenshotsEnabled ScreenRecordingEnabled
    ClipboardSharingEnabled SystemUpdatesEnabled SideLoadingEnabled
    ApplicationInstallationEnabled AccountCreationEnabled FactoryResetEnabled BrowserEnabled
    BackupEnabled CloudSyncEnabled MemoryCardEnabled UsbStorageEnabled ContactsExportEnabled
    VoiceCallsEnabled MessagesEnabled MobileNetworkSettingsEnabled DeviceLockSettingsEnabled
    DeveloperShellEnabled CertificateInstallationEnabled UserReportExportEnabled
    DeveloperModeEnabled LanguageSettingsEnabled FingerprintEnabled UsbDevicesEnabled
""".split()
