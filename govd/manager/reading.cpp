// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "accessswitchpluginloader.h"
#include "policymanager.h"
#include "policytypes.h"

#include <QDebug>

Pellora::AccessSwitchPlugin *PolicyManager::switchPlugin()
{
    return Pellora::AccessSwitchPluginLoader::instance()->plugin();
}

QVariant PolicyManager::policyValue(const QString &key)
{
    if (auto *plugin = switchPlugin()) {
        const PolicyType type = keyToType(key);
        const QHash<QString, QList<int>> table = plugin->keyPolicyTypes();
        for (auto row = table.begin(); row != table.end(); ++row) {
            if (row->contains(type) && !switchValue(row.key()).toBool())
                return false;
        }
    }
    if (!restriction.checkPolicy(key))
        return false;
    return policies.value(key);
}

QVariant PolicyManager::switchValue(const QString &key)
{
    auto *plugin = switchPlugin();
    if (!plugin)
        return false;

    QVariant value = plugin->keyValue(key);
    if (value.userType() == QMetaType::Bool)
        return value;
    if (value.userType() == QMetaType::Int) {
        qWarning() << "AccessSwitch plugin failed to retrieve value for key:" << key;
        qWarning() << "Return code:" << value.toInt();
    } else {
        qWarning() << "Unknown value type" << key;
    }
    return false;
}

QStringList PolicyManager::switches()
{
    auto *plugin = switchPlugin();
    return plugin ? plugin->keyPolicyTypes().keys() : QStringList();
}

QList<int> PolicyManager::switchPolicyTypes(const QString &key)
{
    auto *plugin = switchPlugin();
    return plugin ? plugin->keyPolicyTypes().value(key) : QList<int>();
}

void PolicyManager::onPolicyIsLockedChanged(const QString &key, bool isLocked)
{
    // Passed on only while it holds: another plugin may still lock the policy, or the lock may have
    // changed again. A lock changes the effective value, not the enforced one.
    if (isLocked == !restriction.checkPolicy(key))
        Q_EMIT policyChanged(key, policyValue(key));
}
