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

/// The one central object: holds every policy's value, answers reads, and takes changes through
/// their whole life: caller check, lock, file, audit event, store, enforcement, announcement.
///
/// Built once, before the daemon is on the bus; main thread only. Its definition is split by
/// concern: construction (policymanager.cpp), configuration files (configuration.cpp), reading
/// (reading.cpp), the write path (writing.cpp), the caller check (authorisation.cpp), audit events
/// (audit.cpp) and removable storage (partitions.cpp).
///
/// The order of members, signals and slots is part of the interface: queued calls go by index.
class PolicyManager final : public EnforcerManager, public QDBusContext
{
    Q_OBJECT

public:
    /// Builds everything, reads the configuration, and fills in and persists defaults. Each value
    /// that comes to be stored here is enforced at once.
    explicit PolicyManager(QObject *parent);
    ~PolicyManager() override;

    /// Enforces every policy once with its effective value, those without a value as off.
    void setupPolicies();

    /// The effective value of a policy: false while a switch that governs it is off or a source
    /// locks it, otherwise the stored value; invalid when there is none.
    QVariant policyValue(const QString &key) override;

    /// The value of an access switch as its plugin tells it; false, after a warning, when the
    /// plugin fails, and false without a plugin.
    QVariant switchValue(const QString &key);

    /// The access switches that the plugin knows, in its order.
    QStringList switches();

    /// The numbers of the policies that the access switch @p key governs; empty for an unknown one.
    QList<int> switchPolicyTypes(const QString &key);

    /// Takes a new policy value. True when it was accepted: allowed, not locked, and saved.
    /// An audit event is recorded if @p logEvent is set.
    bool setPolicyValue(const QString &key, const QVariant &value, bool logEvent);

    /// Takes a new switch value. True when it was accepted: allowed, taken by the plugin, and
    /// saved. A key that the file cannot hold is refused before the plugin is asked; a switch that
    /// could not be saved for another reason keeps its new value all the same.
    bool setSwitchValue(const QString &key, const QVariant &value);

    /// Unmounts @p partition if it is a mounted external one whose bus a policy forbids.
    void processPartition(const Partition &partition);

Q_SIGNALS:
    /// A policy was stored, a switch that governs it changed, or its lock did. @p value is what
    /// was enforced, or after a change of the lock what readers see. It can be the old one.
    void policyChanged(const QString &key, const QVariant &value);

    /// The plugin announced @p value for the access switch @p key.
    void switchChanged(const QString &key, const QVariant &value);

public Q_SLOTS:
    /// Stores a value that differs from the stored one, enforces its effect and announces it.
    void updatePolicyValue(const QString &key, const QVariant &value);

    /// Enforces and announces every policy that the access switch @p key governs, then announces
    /// the switch itself.
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
