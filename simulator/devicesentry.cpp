// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/devicesentry.h"

namespace Simulator {
namespace {

const QLatin1String Path("/org/brinos/DeviceSentry1/Usb");
const QLatin1String UsbManager("org.brinos.DeviceSentry1.UsbManager");
const QLatin1String Enabled("Enabled");

} // namespace

DeviceSentry::DeviceSentry()
    : Service(QStringLiteral("org.brinos.DeviceSentry1"))
{
    const Property enabled{Enabled, QStringLiteral("b"),
                           [this] { return QVariant(m_isUsbEnabled); },
                           [this](const QVariant &value) {
                               return setUsbEnabled(value.toBool());
                           }};
    objects().add(Path, {UsbManager, {}, {enabled}, {}});
}

Reply DeviceSentry::setUsbEnabled(bool isEnabled)
{
    if (m_isUsbEnabled != isEnabled) {
        m_isUsbEnabled = isEnabled;
        sendPropertyChanged(Path, UsbManager, Enabled);
        Q_EMIT changed();
    }
    return {};
}

} // namespace Simulator
