// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/usbwhitelist.h"

#include "support/facts.h"
#include "support/files.h"
#include "support/wording.h"

namespace Support {

namespace {

const QString Target =
    QStringLiteral("com.meego.usb_moded /com/meego/usb_moded com.meego.usb_moded");
const QString SetAll = QStringLiteral("set_whitelisted_modes");

} // namespace

void UsbWhitelist::writePolicies(bool usbDeveloperMode, bool usbMediaTransfer, bool developerMode)
{
    const auto text = [](bool value) {
        return value ? "true\n" : "false\n";
    };
    Files::write(PolicyFile,
                 QByteArray("[policy]\nUsbDeveloperModeEnabled=") + text(usbDeveloperMode)
                     + "UsbMediaTransferEnabled=" + text(usbMediaTransfer)
                     + "DeveloperModeEnabled=" + text(developerMode));
}

QString UsbWhitelist::setAll(const QString &modes)
{
    return Wording::call(Target, SetAll, QStringLiteral("s"), {modes});
}

QString UsbWhitelist::setMode(const QString &mode, bool isAllowed)
{
    return Wording::call(Target, QStringLiteral("set_whitelisted"), QStringLiteral("sb"),
                         {mode, isAllowed});
}

QStringList UsbWhitelist::sent(WatchedDaemon &daemon)
{
    daemon.monitor().settle();
    QStringList texts;
    for (const BusMessage &call : daemon.monitor().calls(SetAll))
        texts.append(call.arguments.value(0).toString());
    return texts;
}

QStringList UsbWhitelist::sentModes(WatchedDaemon &daemon)
{
    const QStringList lists = sent(daemon);
    if (lists.size() != 1)
        return {QStringLiteral("%1 whitelists").arg(lists.size())};
    QStringList modes = lists.first().split(QLatin1Char(','));
    modes.sort();
    return modes;
}

} // namespace Support
