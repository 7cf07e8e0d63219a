// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_POLICYENFORCER_H
#define GOVD_ENFORCER_POLICYENFORCER_H

#include "policyenforcementtask.h"

#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QVector>

class EnforcerManager;

/// Enforces policies on the running system, through the handlers in tables.cpp.
///
/// A task runs its policy's direct handler at once, then the handler of each service that enforces
/// the policy. For a service that has not been seen on the bus yet, the task waits until the
/// service appears; tasks for one service run in order.
///
/// Every call comes from the main thread. The mutex is held while a service's handler runs, so a
/// handler that calls back deadlocks: no other task can run in the middle of one.
class PolicyEnforcer : public QObject
{
    Q_OBJECT

public:
    /// Subscribes to changes of names on the bus, then marks the services that are there already.
    explicit PolicyEnforcer(EnforcerManager *manager);
    ~PolicyEnforcer() override;

    void enforcePolicy(PolicyEnforcementTask task);

public Q_SLOTS:
    /// Marks the service as seen on the bus and runs the tasks that waited for it. Names of other
    /// services are ignored.
    void applyServicePolicies(const QString &serviceName);

private:
    struct ServiceInfo
    {
        QVector<PolicyType> types;
        QList<PolicyEnforcementTask> pendingTasks;
        PolicyHandler handler = nullptr;
        bool registered = false; ///< stays true when the service leaves: its tasks then fail
    };

    void buildServices();
    void applyPoliciesOfPresentServices();

    QHash<PolicyType, QStringList> m_typeServices;
    QHash<QString, ServiceInfo> m_services;
    QMutex m_mutex; ///< not recursive; for pendingTasks and registered, held while a handler runs
};

#endif
