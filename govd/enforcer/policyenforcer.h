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

/// Carries out policies on the running system, by the handlers in tables.cpp.
///
/// A task runs its policy's direct handler at once, then the handler of each service that enforces
/// the policy. For a service that has not been seen on the bus yet the task waits, and runs, in its
/// turn, when the service appears. Main thread only.
class PolicyEnforcer : public QObject
{
    Q_OBJECT

public:
    /// Starts to watch the bus, and looks who is there already.
    explicit PolicyEnforcer(EnforcerManager *manager);
    ~PolicyEnforcer() override;

    void enforcePolicy(PolicyEnforcementTask task);

public Q_SLOTS:
    /// Notes that the service has been seen on the bus and runs the tasks that waited for it. A
    /// name that is not watched is ignored.
    void applyServicePolicies(const QString &serviceName);

private:
    struct ServiceInfo
    {
        QVector<PolicyType> types;
        QList<PolicyEnforcementTask> pendingTasks;
        PolicyHandler handler = nullptr;
        bool registered = false; ///< never goes back: a service that left gets its tasks, and fails
    };

    void buildServices();
    void applyPoliciesOfPresentServices();

    QHash<PolicyType, QStringList> m_typeServices;
    QHash<QString, ServiceInfo> m_services;
    QMutex m_mutex; ///< guards pendingTasks and registered, and is held while their handler runs
};

#endif
