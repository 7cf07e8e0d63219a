// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policymanager.h"

#include "policyadaptor.h"
#include "policytypes.h"
#include "switchadaptor.h"

#include <QDBusReply>
#include <QDBusVariant>

#include <pellorapolicy/accessswitchplugin.h>

namespace {

/// The one policy whose default depends on the device.
const QLatin1String UserReportKey("UserReportExportEnabled");

/// The default of that policy: true when the device says that its operating system is not
/// certified. Numbers and texts count by Qt's boolean reading; any other reply, and none, gives
/// false.
bool userReportDefault()
{
    ServiceProxy features(Names::DeviceFeatureProperties);
    const QDBusReply<QDBusVariant> reply = features.call(
        QStringLiteral("Get"), Names::DeviceFeatures, QStringLiteral("isOsCertified"));
    const QVariant isOsCertified = reply.value().variant();
    return isOsCertified.canConvert<bool>() && !isOsCertified.toBool();
}

} // namespace

PolicyManager::PolicyManager(QObject *parent)
    : EnforcerManager(parent)
    , systemLogs(Names::SystemLogs)
    , enforcer(this)
    , restriction(this)
{
    exportInterfaces();
    connect(&restriction, &PolicyRestriction::policyIsLockedChanged, this,
            &PolicyManager::onPolicyIsLockedChanged);
    followSwitches();
    readConfiguration();
    storeDefaults();
}

PolicyManager::~PolicyManager() = default;

void PolicyManager::exportInterfaces()
{
    auto *policyAdaptor = new PolicyAdaptor(this);
    connect(this, &PolicyManager::policyChanged, policyAdaptor,
            [policyAdaptor](const QString &key, const QVariant &value) {
                if (value.isValid()) // QtDBus cannot send an invalid one
                    Q_EMIT policyAdaptor->PolicyChanged(key, QDBusVariant(value));
            });
    auto *switchAdaptor = new SwitchAdaptor(this);
    connect(this, &PolicyManager::switchChanged, switchAdaptor,
            [switchAdaptor](const QString &key, const QVariant &value) {
                Q_EMIT switchAdaptor->SwitchChanged(key, QDBusVariant(value));
            });
}

void PolicyManager::followSwitches()
{
    if (auto *plugin = switchPlugin()) {
        connect(plugin, &Pellora::AccessSwitchPlugin::keyValueChanged, this,
                &PolicyManager::enforceSwitchPolicies);
    }
}

void PolicyManager::storeDefaults()
{
    const QMetaEnum types = PolicyTypes::enumeration();
    for (int i = 0; i < types.keyCount(); ++i) {
        const QString key = QString::fromLatin1(types.key(i));
        if (policies.contains(key))
            continue;
        const bool value = key == UserReportKey ? userReportDefault() : true;
        setPolicyValue(key, value, false);
    }
}

void PolicyManager::setupPolicies()
{
    static const QMetaEnum types = PolicyTypes::enumeration();
    for (int value = 1; value < types.keyCount(); ++value) { // dense from 0, which is no policy
        const QString key = typeToKey(static_cast<PolicyType>(value));
        enforcePolicy(key, policyValue(key).toBool());
    }
}
