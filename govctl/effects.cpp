// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/effects.h"

#include "commandline/text.h"
#include "policytypes.h"

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
    {PolicyTypes::Camera,
     QT_TRANSLATE_NOOP("govd",
                       "creates /var/lib/govd/camera_enabled, the sign for camera programs"),
     QT_TRANSLATE_NOOP("govd",
                       "removes /var/lib/govd/camera_enabled, the sign for camera programs")},
    {PolicyTypes::Camera,
     QT_TRANSLATE_NOOP("govd", "lets org.kvt.cameralockscreen and org.kvt.camera start again"),
     QT_TRANSLATE_NOOP("govd", "forbids org.kvt.cameralockscreen and org.kvt.camera to start")},
    {PolicyTypes::InternetSharing, Nothing,
     QT_TRANSLATE_NOOP("govd", "switches tethering over Wi-Fi off")},
    {PolicyTypes::UsbDeveloperMode, QT_TRANSLATE_NOOP("govd", "allows the USB mode developer_mode"),
     QT_TRANSLATE_NOOP("govd", "forbids the USB mode developer_mode")},
    {PolicyTypes::UsbMediaTransfer, QT_TRANSLATE_NOOP("govd", "allows the USB mode mtp_mode"),
     QT_TRANSLATE_NOOP("govd", "forbids the USB mode mtp_mode")},
    {PolicyTypes::Microphone, QT_TRANSLATE_NOOP("govd", "switches the microphone on"),
     QT_TRANSLATE_NOOP("govd", "switches the microphone off")},
    {PolicyTypes::Browser, Nothing,
     QT_TRANSLATE_NOOP("govd", "ends org.kvt.browserstandalone and org.kvt.browserpwa")},
    {PolicyTypes::Browser,
     QT_TRANSLATE_NOOP("govd", "lets org.kvt.browserstandalone and org.kvt.browserpwa start again"),
     QT_TRANSLATE_NOOP("govd",
                       "forbids org.kvt.browserstandalone and org.kvt.browserpwa to start")},
    {PolicyTypes::MemoryCard, Nothing,
     QT_TRANSLATE_NOOP("govd", "unmounts memory cards, those that are plugged in later included")},
    {PolicyTypes::UsbStorage, Nothing,
     QT_TRANSLATE_NOOP("govd", "unmounts USB storage, also what is plugged in later")},
    {PolicyTypes::VoiceCalls, QT_TRANSLATE_NOOP("govd", "lets voicecall-ui start again"),
     QT_TRANSLATE_NOOP("govd", "forbids voicecall-ui to start")},
    {PolicyTypes::Messages, Nothing, QT_TRANSLATE_NOOP("govd", "ends org.kvt.messages")},
    {PolicyTypes::Messages, QT_TRANSLATE_NOOP("govd", "lets org.kvt.messages start again"),
     QT_TRANSLATE_NOOP("govd", "forbids org.kvt.messages to start")},
    {PolicyTypes::DeveloperShell,
     QT_TRANSLATE_NOOP("govd", "removes /var/lib/devel-su/.disable, so devel-su works"),
     QT_TRANSLATE_NOOP("govd", "creates /var/lib/devel-su/.disable, so devel-su is disabled")},
    {PolicyTypes::UserReport,
     QT_TRANSLATE_NOOP("govd",
                       "creates /var/lib/govd/user_report_enabled, the sign for user reports"),
     QT_TRANSLATE_NOOP("govd",
                       "removes /var/lib/govd/user_report_enabled, the sign for user reports")},
    {PolicyTypes::DeveloperMode, Nothing,
     QT_TRANSLATE_NOOP("govd", "switches remote access in developer mode off")},
    {PolicyTypes::DeveloperMode, QT_TRANSLATE_NOOP("govd", "allows the USB mode developer_mode"),
     QT_TRANSLATE_NOOP("govd", "forbids the USB mode developer_mode")},
    {PolicyTypes::UsbDevices, QT_TRANSLATE_NOOP("govd", "switches USB devices on"),
     QT_TRANSLATE_NOOP("govd", "switches USB devices off")},
};

} // namespace

QStringList enforcementEffects(int type, bool value)
{
    QStringList result;
    for (const Effect &effect : effects) {
        const char *text = value ? effect.whenOn : effect.whenOff;
        if (effect.type == type && *text)
            result.append(Text::tr(text));
    }
    return result;
}
