// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "keyfile.h"
#include "names.h"
#include "policymanager.h"
#include "policytypes.h"
#include "replyvalue.h"
#include "samevalue.h"
#include "writerecord.h"

#include <QDebug>

#include <pellorapolicy/accessswitchplugin.h>

bool PolicyManager::setPolicyValue(const QString &key, const QVariant &value, bool logEvent)
{
    WriteRecord record(WriteRecord::Policy, key, value);
    if (!isCallAllowed(&record))
        return record.refuse(WriteRecord::Denied);
    if (!restriction.checkPolicy(key))
        return record.refuse(WriteRecord::Locked);
    if (!canBeGivenBack(value))
        return record.refuse(WriteRecord::CannotBeHeld);
    if (!saveKeyValue(Names::PolicyFile, Names::ConfigurationGroup, key, value.toBool())) {
        // The line is fixed with the switch file's path, although the policy file has failed.
        qWarning() << "Failed to save configuration to file" << Names::SwitchFile;
        return record.refuse(WriteRecord::NotSaved);
    }
    if (logEvent)
        record.accept(createLogEvent(key, value, QVariant()));
    updatePolicyValue(key, value);
    return true;
}

bool PolicyManager::setSwitchValue(const QString &key, const QVariant &value)
{
    WriteRecord record(WriteRecord::Switch, key, value);
    if (!isCallAllowed(&record))
        return record.refuse(WriteRecord::Denied);
    auto *plugin = switchPlugin();
    if (!plugin)
        return record.refuse(WriteRecord::NoPlugin);
    if (!canBeGivenBack(value))
        return record.refuse(WriteRecord::CannotBeHeld);

    // Checked first, because the plugin would keep and announce a value that is refused later.
    if (!canSaveKey(Names::SwitchFile, Names::ConfigurationGroup, key)) {
        qWarning() << "Failed to save configuration to file" << Names::SwitchFile;
        return record.refuse(WriteRecord::NotSaved);
    }

    const QVariant oldValue = switchValue(key);
    if (const int code = plugin->setKeyValue(key, value)) {
        qWarning() << "AccessSwitch plugin failed to set value for key:" << key;
        qWarning() << "Return code:" << code;
        return record.refuse(WriteRecord::RefusedByPlugin);
    }
    if (!saveKeyValue(Names::SwitchFile, Names::ConfigurationGroup, key, value.toBool())) {
        qWarning() << "Failed to save configuration to file" << Names::SwitchFile;
        return record.refuse(WriteRecord::NotSaved);
    }
    record.accept(createLogEvent(key, value, oldValue));
    return true;
}

void PolicyManager::updatePolicyValue(const QString &key, const QVariant &value)
{
    QVariant &stored = policies[key];
    if (isSameValue(stored, value))
        return;
    stored = value;

    const bool effective = combineWithSwitch(key, value.toBool());
    if (!enforcePolicy(key, effective)) {
        qWarning() << "Failed to enforce policy:" << key << "=" << (effective ? "true" : "false");
    }
    Q_EMIT policyChanged(key, effective);
}

/// The value to enforce for the stored @p value: false when the first switch that governs the
/// policy is off. The effective value also depends on other switches that govern it, and on locks.
bool PolicyManager::combineWithSwitch(const QString &key, bool value)
{
    auto *plugin = switchPlugin();
    if (!plugin)
        return value;

    const PolicyType type = keyToType(key);
    const QHash<QString, QList<int>> table = plugin->keyPolicyTypes();
    for (auto row = table.begin(); row != table.end(); ++row) {
        if (row->contains(type))
            return value && switchValue(row.key()).toBool();
    }
    return value;
}

bool PolicyManager::enforcePolicy(const QString &key, bool value)
{
    if (!isCallAllowed())
        return false;
    const PolicyType type = keyToType(key);
    if (type != PolicyTypes::None)
        enforcer.enforcePolicy({type, value});
    return true;
}

void PolicyManager::enforceSwitchPolicies(const QString &key, const QVariant &value)
{
    const QList<int> types = switchPolicyTypes(key);
    for (const int type : types) {
        const QString policyKey = typeToKey(static_cast<PolicyType>(type));
        const bool effective = policies.value(policyKey).toBool() && value.toBool();
        if (!enforcePolicy(policyKey, effective))
            qWarning() << "Failed to enforce switch policy:" << key << "-" << policyKey;
        Q_EMIT policyChanged(policyKey, effective);
    }
    Q_EMIT switchChanged(key, value);
}
