// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "carriers.h"

#include "policytypes.h"
#include "text.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QFileInfo>

#include <systemsettings/partitionmanager.h>

#include <algorithm>
#include <utility>

using namespace PolicyTypes;

namespace {

const Names::RemoteObject Storage{Names::text("org.freedesktop.UDisks2"),
                                  Names::text("/org/freedesktop/UDisks2"),
                                  Names::text("org.freedesktop.DBus.ObjectManager")};

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
    return surroundings.isAbsent(carrier.name) ? absent(carrier.name) : silent(carrier.name);
}

Finding usbManager(Surroundings &surroundings, const Carrier &carrier, bool value)
{
    if (surroundings.isAbsent(carrier.name))
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
    if (surroundings.isAbsent(carrier.name))
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
    if (surroundings.isAbsent(carrier.name))
        return absent(carrier.name);
    const std::optional<QStringList> mounts = surroundings.mounts(carrier.type);
    if (!mounts)
        return silent(carrier.name);
    if (mounts->isEmpty())
        return finding(true, QStringLiteral("none is mounted"));
    return finding(value, QStringLiteral("mounted at %1").arg(mounts->join(QStringLiteral(", "))));
}

} // namespace

const QVector<Carrier> &carriers()
{
    const QString &sandbox = Names::ApplicationSandbox.service;
    const QString &runtimeManager = Names::RuntimeManager.service;
    const QString &usbModes = Names::UsbModes.service;
    static const QVector<Carrier> all{
        {Camera, Names::CameraMarker, enabledMarker},
        {Camera, sandbox, toldService},
        {InternetSharing, Names::WifiTechnology.service, tethering},
        {UsbDeveloperMode, usbModes, toldService},
        {UsbMediaTransfer, usbModes, toldService},
        {Microphone, Names::AudioPolicy.service, toldService},
        {Browser, runtimeManager, toldService},
        {Browser, sandbox, toldService},
        {MemoryCard, Storage.service, storage},
        {UsbStorage, Storage.service, storage},
        {VoiceCalls, sandbox, toldService},
        {Messages, runtimeManager, toldService},
        {Messages, sandbox, toldService},
        {DeveloperShell, Names::DeveloperShellMarker, disabledMarker},
        {UserReport, Names::UserReportMarker, enabledMarker},
        {DeveloperMode, Names::DeveloperMode.service, toldService},
        {DeveloperMode, usbModes, toldService},
        {UsbDevices, Names::UsbManagerProperties.service, usbManager},
    };
    return all;
}

QStringList absentServices(Surroundings &surroundings, int type)
{
    QStringList result;
    for (const Carrier &carrier : carriers()) {
        const bool isFile = carrier.name.startsWith(QLatin1Char('/'));
        if (carrier.type == type && !isFile && surroundings.isAbsent(carrier.name))
            result.append(carrier.name);
    }
    return result;
}

bool Surroundings::isAbsent(const QString &service)
{
    if (!m_names)
        m_names = m_daemon.ask(Names::BusDaemon, QStringLiteral("ListNames"), {});
    return m_names->signature() == QLatin1String("as")
        && !m_names->arguments().constFirst().toStringList().contains(service);
}

std::optional<bool> Surroundings::usbEnabled()
{
    const QDBusMessage reply = m_daemon.ask(Names::UsbManagerProperties, QStringLiteral("Get"),
                                            {Names::UsbManager, QStringLiteral("Enabled")});
    const QVariant value = reply.arguments().value(0).value<QDBusVariant>().variant();
    return value.userType() == QMetaType::Bool ? std::optional<bool>(value.toBool()) : std::nullopt;
}

std::optional<bool> Surroundings::tethering()
{
    const QDBusMessage reply =
        m_daemon.ask(Names::WifiTechnology, QStringLiteral("GetProperties"), {});
    if (reply.signature() != QLatin1String("a{sv}"))
        return std::nullopt;
    const auto properties = qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    const QVariant value = properties.value(QStringLiteral("Tethering"));
    return value.userType() == QMetaType::Bool ? std::optional<bool>(value.toBool()) : std::nullopt;
}

std::optional<QStringList> Surroundings::mounts(int type)
{
    if (!m_partitions)
        m_partitions = listPartitions();
    if (!*m_partitions)
        return std::nullopt;
    const int bus = type == MemoryCard ? 0 : 1;
    QStringList result;
    for (const Partition &partition : std::as_const(**m_partitions)) {
        // A drive without a ConnectionBus counts as a memory card, as it does for the daemon.
        if (partition.drive().value(QStringLiteral("connectionBus")).toInt() == bus
            && partition.storageType() == Partition::External
            && partition.status() == Partition::Mounted)
            result.append(printable(partition.mountPath()));
    }
    return result;
}

/// The manager of partitions waits by a limit of its own, and an error is an empty list to it. So a
/// listing is asked for here too, after the manager's own: when this one has come, the manager's
/// has been taken.
std::optional<QVector<Partition>> Surroundings::listPartitions() const
{
    const PartitionManager manager;
    QCoreApplication::sendPostedEvents(); // has the manager ask
    const QDBusMessage listing = m_daemon.ask(Storage, QStringLiteral("GetManagedObjects"), {});
    if (listing.signature() != QLatin1String("a{oa{sa{sv}}}"))
        return std::nullopt;
    return manager.partitions(Partition::Any | Partition::ExcludeParents);
}
