// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/carriers.h"

#include "govctl/text.h"
#include "policytypes.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QFileInfo>

#include <systemsettings/partitionmanager.h>

using namespace PolicyTypes;

namespace {

const QLatin1String StorageService("org.freedesktop.UDisks2");

Finding finding(bool holds, const QString &text)
{
    return {holds ? Finding::Kind::Holds : Finding::Kind::Fails, text};
}

/// Holds if the file at @p path exists exactly when @p isThere is true.
Finding lookForFile(const QString &path, bool isThere)
{
    const QFileInfo directory(QFileInfo(path).path());
    if (directory.isDir() && !directory.isExecutable())
        return {Finding::Kind::Unseen, QStringLiteral("this user may not look at %1").arg(path)};
    const bool exists = QFileInfo::exists(path);
    return finding(exists == isThere,
                   exists ? QStringLiteral("%1 is there").arg(path)
                          : QStringLiteral("%1 is not there").arg(path));
}

Finding enabledMarker(Surroundings &, const Carrier &carrier, bool value)
{
    return lookForFile(carrier.name, value);
}

Finding disabledMarker(Surroundings &, const Carrier &carrier, bool value)
{
    return lookForFile(carrier.name, !value);
}

Finding absent(const QString &service)
{
    return {Finding::Kind::Absent, QStringLiteral("%1 is not on the bus").arg(service)};
}

Finding silent(const QString &service)
{
    return {Finding::Kind::Unseen, QStringLiteral("%1 does not tell").arg(service)};
}

/// A service whose interface has no way to read its state: only its presence can be checked.
Finding toldService(Surroundings &surroundings, const Carrier &carrier, bool)
{
    return surroundings.isOnBus(carrier.name) ? silent(carrier.name) : absent(carrier.name);
}

Finding usbManager(Surroundings &surroundings, const Carrier &carrier, bool value)
{
    if (!surroundings.isOnBus(carrier.name))
        return absent(carrier.name);
    const std::optional<bool> enabled = surroundings.usbEnabled();
    if (!enabled)
        return silent(carrier.name);
    return finding(*enabled == value,
                   *enabled ? QStringLiteral("USB devices are enabled")
                            : QStringLiteral("USB devices are disabled"));
}

/// When the policy is on, tethering may be on or off: the user decides.
Finding tethering(Surroundings &surroundings, const Carrier &carrier, bool value)
{
    if (!surroundings.isOnBus(carrier.name))
        return absent(carrier.name);
    const std::optional<bool> isOn = surroundings.tethering();
    if (!isOn)
        return silent(carrier.name);
    return finding(value || !*isOn,
                   *isOn ? QStringLiteral("tethering over Wi-Fi is on")
                         : QStringLiteral("tethering over Wi-Fi is off"));
}

Finding storage(Surroundings &surroundings, const Carrier &carrier, bool value)
{
    if (!surroundings.isOnBus(carrier.name))
        return absent(carrier.name);
    const QStringList mounts = surroundings.mounts(carrier.type);
    if (mounts.isEmpty())
        return finding(true, QStringLiteral("none is mounted"));
    return finding(value, QStringLiteral("mounted at %1").arg(mounts.join(QStringLiteral(", "))));
}

} // namespace

const QVector<Carrier> &carriers()
{
    const QString &sandbox = Names::ApplicationSandbox.service;
    const QString &usbModes = Names::UsbModes.service;
    static const QVector<Carrier> all{
        {Camera, Names::CameraMarker, enabledMarker},
        {Camera, sandbox, toldService},
        {InternetSharing, Names::WifiTechnology.service, tethering},
        {UsbDeveloperMode, usbModes, toldService},
        {UsbMediaTransfer, usbModes, toldService},
        {Microphone, Names::AudioPolicy.service, toldService},
        {Browser, sandbox, toldService},
        {MemoryCard, StorageService, storage},
        {UsbStorage, StorageService, storage},
        {VoiceCalls, sandbox, toldService},
        {Messages, sandbox, toldService},
        {DeveloperShell, Names::DeveloperShellMarker, disabledMarker},
        {UserReport, Names::UserReportMarker, enabledMarker},
        {DeveloperMode, Names::DeveloperMode.service, toldService},
        {DeveloperMode, usbModes, toldService},
        {UsbDevices, Names::UsbManagerProperties.service, usbManager},
    };
    return all;
}

bool Surroundings::isOnBus(const QString &service)
{
    if (!m_names) {
        const QDBusMessage reply = m_daemon.ask(Names::BusDaemon, QStringLiteral("ListNames"), {});
        m_names = reply.arguments().value(0).toStringList();
    }
    return m_names->contains(service);
}

std::optional<bool> Surroundings::usbEnabled()
{
    const QDBusMessage reply = m_daemon.ask(Names::UsbManagerProperties, QStringLiteral("Get"),
                                            {Names::UsbManager, QStringLiteral("Enabled")});
    const QVariant value = reply.arguments().value(0).value<QDBusVariant>().variant();
    return value.type() == QVariant::Bool ? std::optional<bool>(value.toBool()) : std::nullopt;
}

std::optional<bool> Surroundings::tethering()
{
    const QDBusMessage reply =
        m_daemon.ask(Names::WifiTechnology, QStringLiteral("GetProperties"), {});
    if (reply.signature() != QLatin1String("a{sv}"))
        return std::nullopt;
    const auto properties = qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    const QVariant value = properties.value(QStringLiteral("Tethering"));
    return value.type() == QVariant::Bool ? std::optional<bool>(value.toBool()) : std::nullopt;
}

QStringList Surroundings::mounts(int type)
{
    const int bus = type == MemoryCard ? 0 : 1;
    const PartitionManager manager;
    QStringList result;
    const auto partitions = manager.partitions(Partition::Any | Partition::ExcludeParents);
    for (const Partition &partition : partitions) {
        // A drive without a ConnectionBus counts as a memory card, as it does for the daemon.
        if (partition.drive().value(QStringLiteral("connectionBus")).toInt() == bus
            && partition.storageType() == Partition::External
            && partition.status() == Partition::Mounted)
            result.append(printable(partition.mountPath()));
    }
    return result;
}
