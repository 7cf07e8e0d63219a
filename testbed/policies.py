# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The policies of the platform. The list is independent of the platform's header, so that a wrong
change there makes a test fail."""

KEYS = (  # in the order of their numbers, which begin with 0
    "NoPolicy CameraEnabled LocationEnabled BluetoothEnabled WlanEnabled MobileDataEnabled"
    " FlightModeEnabled RoamingEnabled InternetSharingEnabled VpnEnabled NfcEnabled"
    " ProxySettingsEnabled DateTimeSettingsEnabled UsbDeveloperModeEnabled UsbMediaTransferEnabled"
    " UsbMassStorageEnabled UsbNetworkEnabled UsbDiagnosticsEnabled UsbHostEnabled"
    " UsbAccessoryEnabled MicrophoneEnabled ScreenshotsEnabled ScreenRecordingEnabled"
    " ClipboardSharingEnabled SystemUpdatesEnabled SideLoadingEnabled"
    " ApplicationInstallationEnabled AccountCreationEnabled FactoryResetEnabled BrowserEnabled"
    " BackupEnabled CloudSyncEnabled MemoryCardEnabled UsbStorageEnabled ContactsExportEnabled"
    " VoiceCallsEnabled MessagesEnabled MobileNetworkSettingsEnabled DeviceLockSettingsEnabled"
    " DeveloperShellEnabled CertificateInstallationEnabled UserReportExportEnabled"
    " DeveloperModeEnabled LanguageSettingsEnabled FingerprintEnabled UsbDevicesEnabled".split())


def default_of(key):
    """The value that a policy gets on a device that is not certified and has no file."""
    return key != "UserReportExportEnabled"
