// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/device.h"

#include "names.h"

#include <algorithm>

namespace Simulator {
namespace {

/// How many of the last audit events a state holds: it goes over the bus at each change.
constexpr int ShownEvents = 5;

const QString Slow = QStringLiteral("slow");
const QString Silent = QStringLiteral("silent");

Fault faultOf(const QString &word, double seconds)
{
    if (word == Slow)
        return Fault::late(static_cast<int>(seconds * 1000));
    if (word == Silent)
        return Fault::silence();
    if (word == QLatin1String("wrong-type"))
        return Fault::wrongAnswer({42});
    return Fault::error();
}

} // namespace

Device::Device()
    : m_ports(m_neighbours.storage)
    , m_camera(Names::CameraMarker)
    , m_reported(factsOf(state()))
{
    for (const NeighbourRow &row : neighbourRows()) {
        Service *service = &row.in(m_neighbours);
        connect(service, &Service::changed, this, &Device::changed);
        connect(service, &Service::presenceChanged, this, &Device::changed);
        connect(service, &Service::called, this,
                [this, word = row.word](const Call &call) { report(word, call); });
    }
    connect(&m_camera, &MarkerFile::changed, this, &Device::onMarkerChanged);
}

std::optional<QString> Device::appear()
{
    for (const QString &word : neighbourWords()) {
        if (!service(word)->appear())
            return service(word)->name();
    }
    m_reported = factsOf(state());
    return std::nullopt;
}

Service *Device::service(const QString &word)
{
    for (const NeighbourRow &row : neighbourRows()) {
        if (row.word == word)
            return &row.in(m_neighbours);
    }
    return nullptr;
}

QStringList Device::faultWords()
{
    return {QStringLiteral("error"), Silent, Slow, QStringLiteral("wrong-type")};
}

bool Device::setFault(Service &service, const QString &word, double seconds)
{
    const bool isNone = word == QLatin1String("none");
    if (!isNone && !faultWords().contains(word))
        return false;
    service.clearFaults();
    if (!isNone)
        service.setFault(faultOf(word, seconds));
    m_faults[&service] = word == Slow ? QStringLiteral("slow %1").arg(seconds) : word;
    Q_EMIT changed();
    return true;
}

void Device::report(const QString &origin, const Call &call)
{
    const Service *called = service(origin);
    const bool isSilent = called && m_faults.value(called) == Silent;
    emitHappening({call.time,
                   origin,
                   call.path,
                   call.member,
                   call.arguments,
                   isSilent ? Silent : call.errorName,
                   {}});
}

void Device::onMarkerChanged()
{
    Q_EMIT changed();
    emitHappening(
        {QDateTime::currentDateTime(), QStringLiteral("file"), m_camera.path(), {}, {}, {}, {}});
}

void Device::emitHappening(Happening happening)
{
    const Facts now = factsOf(state());
    happening.changes = changesBetween(m_reported, now);
    m_reported = now;
    Q_EMIT happened(happening);
}

QJsonArray Device::services()
{
    QJsonArray services;
    for (const NeighbourRow &row : neighbourRows()) {
        const Service &service = row.in(m_neighbours);
        services.append(QJsonObject{
            {QStringLiteral("word"), row.word},
            {QStringLiteral("name"), service.name()},
            {QStringLiteral("present"), service.isPresent()},
            {QStringLiteral("fault"), m_faults.value(&service, QStringLiteral("none"))}});
    }
    return services;
}

QJsonArray Device::storage() const
{
    QJsonArray storage;
    for (const StoragePorts::Medium &medium : m_ports.media())
        storage.append(QJsonObject{{QStringLiteral("kind"), medium.kind},
                                   {QStringLiteral("label"), medium.label},
                                   {QStringLiteral("mounted"), !medium.mountPoint.isEmpty()},
                                   {QStringLiteral("mountPoint"), medium.mountPoint}});
    return storage;
}

QJsonArray Device::lastEvents() const
{
    QJsonArray events;
    const QVector<SystemLogs::Event> all = m_neighbours.logs.events();
    for (const SystemLogs::Event &event : all.mid(std::max(0, all.size() - ShownEvents)))
        events.append(QJsonObject{{QStringLiteral("kind"), event.kind},
                                  {QStringLiteral("level"), event.level},
                                  {QStringLiteral("text"), event.text}});
    return events;
}

QJsonObject Device::state()
{
    const auto list = [](const QStringList &texts) {
        return QJsonArray::fromStringList(texts);
    };
    return {{QStringLiteral("camera"), m_camera.isThere()},
            {QStringLiteral("microphone"), m_neighbours.audio.isMicrophoneEnabled()},
            {QStringLiteral("usb"), m_neighbours.usb.isUsbEnabled()},
            {QStringLiteral("usbModes"), list(m_neighbours.usbModes.whitelistedModes())},
            {QStringLiteral("denylist"), list(m_neighbours.sandbox.denylist())},
            {QStringLiteral("tethering"), m_neighbours.network.isTethering()},
            {QStringLiteral("remoteAccess"), m_neighbours.developer.isRemoteConnectionEnabled()},
            {QStringLiteral("certified"), m_neighbours.info.isOsCertified()},
            {QStringLiteral("running"), list(m_neighbours.runtime.runningApplications())},
            {QStringLiteral("storage"), storage()},
            {QStringLiteral("services"), services()},
            {QStringLiteral("events"), lastEvents()},
            {QStringLiteral("eventCount"), m_neighbours.logs.events().size()}};
}

} // namespace Simulator
