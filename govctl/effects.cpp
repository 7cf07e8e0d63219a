// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/effects.h"

#include "govctl/text.h"

namespace {

/// One action of the daemon for one policy; an empty text means that it does nothing.
struct Effect
{
    int type; // as numbers, because each platform names the policies as it likes
    const char *whenOn;
    const char *whenOff;
};

const char *const Nothing = "";

const Effect effects[] = {
    {1,
     QT_TRANSLATE_NOOP("govctl",
                       "creates /var/lib/govd/camera_enabled, the sign for camera programs"),
     QT_TRANSLATE_NOOP("govctl",
                       "removes /var/lib/govd/camera_enabled, the sign for camera programs")},
    {1, QT_TRANSLATE_NOOP("govctl", "lets org.kvt.cameralockscreen and org.kvt.camera start again"),
     QT_TRANSLATE_NOOP("govctl", "forbids org.kvt.cameralockscreen and org.kvt.camera to start")},
    {8, Nothing, QT_TRANSLATE_NOOP("govctl", "switches tethering over Wi-Fi off")},
    {13, QT_TRANSLATE_NOOP("govctl", "allows the USB mode developer_mode"),
     QT_TRANSLATE_NOOP("govctl", "forbids the USB mode developer_mode")},
    {14, QT_TRANSLATE_NOOP("govctl", "allows the USB mode mtp_mode"),
     QT_TRANSLATE_NOOP("govctl", "forbids the USB mode mtp_mode")},
    {20, QT_TRANSLATE_NOOP("govctl", "switches the microphone on"),
     QT_TRANSLATE_NOOP("govctl", "switches the microphone off")},
    {29, Nothing,
     QT_TRANSLATE_NOOP("govctl", "ends org.kvt.browserstandalone and org.kvt.browserpwa")},
    {29,
     QT_TRANSLATE_NOOP("govctl",
                       "lets org.kvt.browserstandalone and org.kvt.browserpwa start again"),
     QT_TRANSLATE_NOOP("govctl",
                       "forbids org.kvt.browserstandalone and org.kvt.browserpwa to start")},
    {32, Nothing,
     QT_TRANSLATE_NOOP("govctl",
                       "unmounts memory cards, those that are plugged in later included")},
    {33, Nothing,
     QT_TRANSLATE_NOOP("govctl", "unmounts USB storage, also what is plugged in later")},
    {35, QT_TRANSLATE_NOOP("govctl", "lets voicecall-ui start again"),
     QT_TRANSLATE_NOOP("govctl", "forbids voicecall-ui to start")},
    {36, Nothing, QT_TRANSLATE_NOOP("govctl", "ends org.kvt.messages")},
    {36, QT_TRANSLATE_NOOP("govctl", "lets org.kvt.messages start again"),
     QT_TRANSLATE_NOOP("govctl", "forbids org.kvt.messages to start")},
    {39, QT_TRANSLATE_NOOP("govctl", "removes /var/lib/devel-su/.disable, so devel-su works"),
     QT_TRANSLATE_NOOP("govctl", "creates /var/lib/devel-su/.disable, so devel-su is disabled")},
    {41,
     QT_TRANSLATE_NOOP("govctl",
                       "creates /var/lib/govd/user_report_enabled, the sign for user reports"),
     QT_TRANSLATE_NOOP("govctl",
                       "removes /var/lib/govd/user_report_enabled, the sign for user reports")},
    {42, Nothing, QT_TRANSLATE_NOOP("govctl", "switches remote access in developer mode off")},
    {42, QT_TRANSLATE_NOOP("govctl", "allows the USB mode developer_mode"),
     QT_TRANSLATE_NOOP("govctl", "forbids the USB mode developer_mode")},
    {45, QT_TRANSLATE_NOOP("govctl", "switches USB devices on"),
     QT_TRANSLATE_NOOP("govctl", "switches USB devices off")},
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
