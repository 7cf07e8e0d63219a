// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tables.h"

#include "handlers.h"
#include "names.h"

using namespace PolicyTypes;

// NOLINTNEXTLINE(cert-err58-cpp): throws only without memory, which ends the start anyway
const QHash<PolicyType, PolicyHandler> policyHandlers{
    {Camera, markCamera},
    {Browser, terminateBrowsers},
    {MemoryCard, unmountRemovableStorage},
    {UsbStorage, unmountRemovableStorage},
    {Messages, terminateMessages},
    {DeveloperShell, markDeveloperShell},
    {UserReport, markUserReport},
    {DeveloperMode, disableRemoteAccess},
    {UsbDevices, switchUsbDevices},
};

// Developer mode is on both routes: remote access is disabled at once, and again when the service
// appears, because it may start with remote access enabled.
// NOLINTNEXTLINE(cert-err58-cpp): throws only without memory, which ends the start anyway
const QHash<QString, QPair<QVector<PolicyType>, PolicyHandler>> serviceHandlers{
    {Names::ApplicationSandbox.service,
     {{Camera, Browser, Microphone, VoiceCalls, Messages, UserReport}, updateDenylist}},
    {Names::UsbModes.service,
     {{UsbDeveloperMode, UsbMediaTransfer, DeveloperMode}, updateUsbModes}},
    {Names::AudioPolicy.service, {{Microphone}, switchMicrophone}},
    {Names::WifiTechnology.service, {{InternetSharing}, disableTethering}},
    {Names::DeveloperMode.service, {{DeveloperMode}, disableRemoteAccess}},
};

// NOLINTNEXTLINE(cert-err58-cpp): throws only without memory, which ends the start anyway
const QHash<PolicyType, QStringList> policyApplications{
    {Camera, {Names::CameraLockScreenApplication, Names::CameraApplication}},
    {Browser, {Names::BrowserApplication, Names::WebApplication}},
    {Messages, {Names::MessagesApplication}},
    {VoiceCalls, {Names::VoiceCallApplication}},
};

// NOLINTNEXTLINE(cert-err58-cpp): throws only without memory, which ends the start anyway
const QHash<PolicyType, const char *> usbModeNames{
    {UsbDeveloperMode, "developer_mode"},
    {UsbMediaTransfer, "mtp_mode"},
    {DeveloperMode, "developer_mode"},
};
