// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/usbmodes.h"

#include <algorithm>

namespace Simulator {
namespace {

Reply unknownMode()
{
    return Reply::invalidArguments(QStringLiteral("There is no such mode"));
}

bool isSupported(const QString &mode)
{
    return UsbModes::supportedModes().contains(mode);
}

} // namespace

UsbModes::UsbModes()
    : Service(QStringLiteral("com.meego.usb_moded"))
{
    for (const QString &mode : supportedModes())
        m_whitelist.insert(mode);
    const auto setAll = [this](const Call &call) {
        return setWhitelist(call.arguments.at(0).toString());
    };
    const auto setOne = [this](const Call &call) {
        return setWhitelisted(call.arguments.at(0).toString(), call.arguments.at(1).toBool());
    };
    objects().add(QStringLiteral("/com/meego/usb_moded"),
                  {name(),
                   {{QStringLiteral("set_whitelisted_modes"), QStringLiteral("s"), {}, setAll},
                    {QStringLiteral("set_whitelisted"), QStringLiteral("sb"), {}, setOne}},
                   {},
                   {}});
}

QStringList UsbModes::supportedModes()
{
    return {QStringLiteral("charging_only"), QStringLiteral("developer_mode"),
            QStringLiteral("mass_storage"), QStringLiteral("mtp_mode")};
}

QStringList UsbModes::whitelistedModes() const
{
    QStringList modes = m_whitelist.values();
    modes.sort();
    return modes;
}

Reply UsbModes::setWhitelist(const QString &joined)
{
    const QStringList modes = joined.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (!std::all_of(modes.begin(), modes.end(), isSupported))
        return unknownMode();
    replaceWhitelist(QSet<QString>(modes.begin(), modes.end()));
    return {};
}

Reply UsbModes::setWhitelisted(const QString &mode, bool isWhitelisted)
{
    if (!isSupported(mode))
        return unknownMode();
    QSet<QString> whitelist = m_whitelist;
    if (isWhitelisted)
        whitelist.insert(mode);
    else
        whitelist.remove(mode);
    replaceWhitelist(whitelist);
    return {};
}

void UsbModes::replaceWhitelist(const QSet<QString> &whitelist)
{
    if (m_whitelist == whitelist)
        return;
    m_whitelist = whitelist;
    Q_EMIT changed();
}

} // namespace Simulator
