// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/policy.h"

#include "benchmark/reference/keyfile.h"
#include "serviceproxy.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace {

const std::string Markers = "/var/lib/govd-reference";

void mark(const std::string &path, bool present)
{
    const bool exists = access(path.c_str(), F_OK) == 0;
    if (present && !exists)
        close(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    else if (!present && exists)
        unlink(path.c_str());
}

void markFeature(const char *name, bool enabled)
{
    if (enabled)
        mkdir(Markers.c_str(), 0755);
    mark(Markers + "/" + name, enabled);
}

/// Enforces the policies of the direct route as the daemon does.
void enforce(const QString &key, bool value)
{
    if (key == QLatin1String("CameraEnabled"))
        markFeature("camera_enabled", value);
    else if (key == QLatin1String("UserReportExportEnabled"))
        markFeature("user_report_enabled", value);
    else if (key == QLatin1String("DeveloperShellEnabled"))
        mark(Markers + "/.disable", !value);
    if (key != QLatin1String("UsbDevicesEnabled"))
        return;
    ServiceProxy usbManager(Names::UsbManagerProperties);
    usbManager.call(QStringLiteral("Set"), Names::UsbManager, QStringLiteral("Enabled"),
                    QVariant::fromValue(QDBusVariant(value)));
}

bool defaultOf(const QString &key)
{
    if (key != QLatin1String("UserReportExportEnabled"))
        return true;
    ServiceProxy features(Names::DeviceFeatureProperties);
    const QDBusMessage reply = features.call(QStringLiteral("Get"), Names::DeviceFeatures,
                                             QStringLiteral("isOsCertified"));
    return reply.type() == QDBusMessage::ReplyMessage
        && !qdbus_cast<QDBusVariant>(reply.arguments().at(0)).variant().toBool();
}

} // namespace

Policy::Policy(Caller *caller, std::string file, const QStringList &keys)
    : QDBusAbstractAdaptor(caller)
    , m_caller(caller)
    , m_systemLogs(Names::SystemLogs)
    , m_file(std::move(file))
{
    followNames();
    lookForPlugins();
    load(keys);
    for (const QString &key : keys)
        enforce(key, m_values.value(key).toBool());
}

/// The reply is not used: the services whose names could be in it are all absent here.
void Policy::followNames()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    bus.connect(Names::BusDaemon.service, Names::BusDaemon.path, Names::BusDaemon.interface,
                QStringLiteral("NameOwnerChanged"), this, SLOT(followName(QString)));
    bus.call(QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                            Names::BusDaemon.interface,
                                            QStringLiteral("ListNames")));
}

void Policy::followName(const QString &name)
{
    Q_UNUSED(name)
}

/// Looks for plugins and for seed files; there are none in a benchmark.
void Policy::lookForPlugins()
{
    QDir(QLibraryInfo::location(QLibraryInfo::LibrariesPath) + Names::SourceRestrictionDirectory)
        .entryList({QStringLiteral("*.so")}, QDir::Files, QDir::Unsorted);
    QFile::exists(Names::AccessSwitchPlugin);
    QDir(Names::PolicyDirectory).entryInfoList();
}

void Policy::load(const QStringList &keys)
{
    const std::map<std::string, bool> loaded = loadValues(m_file);
    for (const QString &key : keys) {
        const auto value = loaded.find(key.toStdString());
        if (value != loaded.end())
            store(key, value->second);
    }
    for (const QString &key : keys) {
        if (!m_values.contains(key))
            store(key, defaultOf(key));
    }
}

QDBusVariant Policy::KeyValue(const QString &key)
{
    return QDBusVariant(m_values.value(key));
}

bool Policy::SetKeyValue(const QString &key, const QDBusVariant &value)
{
    return m_caller->isAllowed() && store(key, value.variant());
}

bool Policy::store(const QString &key, const QVariant &value)
{
    saveKeyValue(m_file, key.toStdString(), value.toBool());
    QVariant &stored = m_values[key];
    if (m_caller->calledFromDBus())
        recordChange(key, value, stored);
    if (stored == value)
        return true;
    stored = value;
    if (!m_caller->calledFromDBus() || m_caller->isAllowed())
        enforce(key, value.toBool());
    Q_EMIT PolicyChanged(key, QDBusVariant(value));
    return true;
}

void Policy::recordChange(const QString &key, const QVariant &newValue, const QVariant &oldValue)
{
    const QString line = QStringLiteral("Policy %1 changed. Old value %2. New value %3.")
                             .arg(key, oldValue.toString(), newValue.toString());
    syslog(LOG_INFO, "%s", line.toUtf8().constData());
    const QDBusPendingCall call = m_systemLogs.asyncCall(QStringLiteral("sendEventStringAlt"),
                                                         QStringLiteral("security-policy-changed"),
                                                         QStringLiteral("INFO_LEVEL"), line);
    auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, watcher, &QObject::deleteLater);
}
