// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "effects.h"

#include "policytypes.h"
#include "text.h"

namespace {

/// One action of the daemon for one policy; an empty text means that it does nothing.
struct Effect
{
    PolicyType type;
    const char *whenOn;
    const char *whenOff;
};

const char *const Nothing = "";

const Effect effects[] = {
    {PolicyTypes::Camera, "creates /var/lib/govd/camera_enabled, the sign for camera programs",
     "removes /var/lib/govd/camera_enabled, the sign for camera programs"},
    {PolicyTypes::Camera, "lets org.kvt.cameralockscreen and org.kvt.camera start again",
     "forbids org.kvt.cameralockscreen and org.kvt.camera to start"},
    {PolicyTypes::InternetSharing, Nothing, "switches tethering over Wi-Fi off"},
    {PolicyTypes::UsbDeveloperMode, "allows the USB mode developer_mode",
     "forbids the USB mode developer_mode"},
    {PolicyTypes::UsbMediaTransfer, "allows the USB mode mtp_mode",
     "forbids the USB mode mtp_mode"},
    {PolicyTypes::Microphone, "switches the microphone on", "switches the microphone off"},
    {PolicyTypes::Browser, Nothing, "ends org.kvt.browserstandalone and org.kvt.browserpwa"},
    {PolicyTypes::Browser, "lets org.kvt.browserstandalone and org.kvt.browserpwa start again",
     "forbids org.kvt.browserstandalone and org.kvt.browserpwa to start"},
    {PolicyTypes::MemoryCard, Nothing,
     "unmounts memory cards, those that are plugged in later included"},
    {PolicyTypes::UsbStorage, Nothing, "unmounts USB storage, also what is plugged in later"},
    {PolicyTypes::VoiceCalls, "lets voicecall-ui start again", "forbids voicecall-ui to start"},
    {PolicyTypes::Messages, Nothing, "ends org.kvt.messages"},
    {PolicyTypes::Messages, "lets org.kvt.messages start again",
     "forbids org.kvt.messages to start"},
    {PolicyTypes::DeveloperShell, "removes /var/lib/devel-su/.disable, so devel-su works",
     "creates /var/lib/devel-su/.disable, so devel-su is disabled"},
    {PolicyTypes::UserReport,
     "creates /var/lib/govd/user_report_enabled, the sign for user reports",
     "removes /var/lib/govd/user_report_enabled, the sign for user reports"},
    {PolicyTypes::DeveloperMode, Nothing, "switches remote access in developer mode off"},
    {PolicyTypes::DeveloperMode, "allows the USB mode developer_mode",
     "forbids the USB mode developer_mode"},
    {PolicyTypes::UsbDevices, "switches USB devices on", "switches USB devices off"},
};

} // namespace

QStringList enforcementEffects(int type, bool value)
{
    QStringList result;
    for (const Effect &effect : effects) {
        const char *text = value ? effect.whenOn : effect.whenOff;
        if (effect.type == type && *text)
            result.append(QString::fromUtf8(text));
    }
    return result;
}

QVector<int> sharingUsbMode(int type)
{
    switch (type) {
    case static_cast<int>(PolicyTypes::UsbDeveloperMode):
        return {PolicyTypes::DeveloperMode};
    case static_cast<int>(PolicyTypes::DeveloperMode):
        return {PolicyTypes::UsbDeveloperMode};
    default:
        return {};
    }
}
