// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_POLICYMANAGER_H
#define GOVD_MANAGER_POLICYMANAGER_H

#include "enforcermanager.h"
#include "policyenforcer.h"
#include "policyrestriction.h"
#include "serviceproxy.h"

#include <QDBusContext>
#include <QHash>
#include <QVariant>

#include <systemsettings/partition.h>

namespace Pellora {
class AccessSwitchPlugin;
}

class WriteRecord;

/// Holds the stored value of every policy, answers reads, and carries out writes in this order:
/// caller check, lock, file, audit event, store, enforcement, signal.
///
/// Built once, before the daemon is on the bus; main thread only. Its definition is split by
/// concern: construction (policymanager.cpp), configuration files (configuration.cpp), reading
/// (reading.cpp), the write path (writing.cpp), the caller check (authorisation.cpp), audit events
/// (audit.cpp) and removable storage (partitions.cpp).
///
/// The order of signals and slots is fixed, because meta-calls name them by their number in it.
class PolicyManager final : public EnforcerManager, public QDBusContext
{
    Q_OBJECT

public:
    /// Loads the plugins, reads the configuration, and stores and saves a default for each policy
    /// without a value. Each value is enforced when it is stored.
    explicit PolicyManager(QObject *parent);
    ~PolicyManager() override;

    /// Enforces every policy once with its effective value, those without a value as off.
    void setupPolicies();

    /// The effective value of a policy: false while a switch that governs it is off or a lock
    /// plugin locks it, otherwise the stored value; invalid when there is none.
    QVariant policyValue(const QString &key) override;

    /// The value of an access switch, from the plugin; false, after a warning, when the plugin
    /// returns no boolean, and false without a plugin.
    QVariant switchValue(const QString &key);

    /// The access switches that the plugin lists, in the order of its hash.
    QStringList switches();

    /// The numbers of the policies that the access switch @p key governs; empty for an unknown one.
    QList<int> switchPolicyTypes(const QString &key);

    /// Sets a policy. True when the value was accepted: the caller has the right, the policy is not
    /// locked, and the value could be saved. An audit event is made if @p logEvent is set.
    bool setPolicyValue(const QString &key, const QVariant &value, bool logEvent);

    /// Sets an access switch. True when the value was accepted: the caller has the right, the
    /// plugin took the value, and it could be saved. A key that the file cannot hold is refused
    /// before the plugin is asked; if saving fails otherwise, the plugin keeps the new value.
    bool setSwitchValue(const QString &key, const QVariant &value);

    /// Unmounts @p partition if it is a mounted external one whose bus a policy forbids.
    void processPartition(const Partition &partition);

Q_SIGNALS:
    /// A policy was stored, a switch that governs it changed, or its lock changed. @p value is the
    /// enforced value, or the effective one after a change of the lock. It can be the old one.
    void policyChanged(const QString &key, const QVariant &value);

    /// The plugin announced @p value for the access switch @p key.
    void switchChanged(const QString &key, const QVariant &value);

public Q_SLOTS:
    /// If @p value differs from the stored value, stores it, enforces it, combined with the first
    /// switch that governs the policy, and emits policyChanged().
    void updatePolicyValue(const QString &key, const QVariant &value);

    /// Enforces every policy that the access switch @p key governs and emits policyChanged() for
    /// each, then switchChanged().
    void enforceSwitchPolicies(const QString &key, const QVariant &value);

private Q_SLOTS:
    void onPolicyIsLockedChanged(const QString &key, bool isLocked);

private:
    static Pellora::AccessSwitchPlugin *switchPlugin();

    void exportInterfaces();
    void followSwitches();
    using FileReader = void (PolicyManager::*)(const QString &path);

    void readConfiguration();
    void readFiles(const QString &file, const QString &directory, FileReader read);
    void readPolicyFile(const QString &path);
    void readSwitchFile(const QString &path);
    void storeDefaults();

    bool isCallAllowed(WriteRecord *record = nullptr);
    bool enforcePolicy(const QString &key, bool value);
    bool combineWithSwitch(const QString &key, bool value);
    QString createLogEvent(const QString &key, const QVariant &newValue, const QVariant &oldValue);

    QHash<QString, QVariant> policies;
    ServiceProxy systemLogs;
    PolicyEnforcer enforcer;
    PolicyRestriction restriction;
};

#endif
