// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policyenforcer.h"

#include "enforcermanager.h"
#include "names.h"
#include "tables.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDebug>
#include <QMutexLocker>

EnforcerManager *enforcerManager = nullptr;

PolicyEnforcer::PolicyEnforcer(EnforcerManager *manager)
    : QObject(manager)
{
    enforcerManager = manager;
    // The slot takes only the first of three arguments, the name: any change of its owner, even the
    // loss, marks the service as seen. Its tasks are then tried and, if it is absent, fail.
    QDBusConnection::systemBus().connect(
        Names::BusDaemon.service, Names::BusDaemon.path, Names::BusDaemon.interface,
        QStringLiteral("NameOwnerChanged"), this, SLOT(applyServicePolicies(QString)));
    buildServices();
    applyPoliciesOfPresentServices();
}

PolicyEnforcer::~PolicyEnforcer() = default;

void PolicyEnforcer::buildServices()
{
    for (auto row = serviceHandlers.begin(); row != serviceHandlers.end(); ++row) {
        ServiceInfo &service = m_services[row.key()];
        service.types = row->first;
        service.handler = row->second;
        for (const PolicyType type : row->first)
            m_typeServices[type].append(row.key());
    }
}

void PolicyEnforcer::applyPoliciesOfPresentServices()
{
    const QDBusReply<QStringList> names = QDBusConnection::systemBus().call(
        QDBusMessage::createMethodCall(Names::BusDaemon.service, Names::BusDaemon.path,
                                       Names::BusDaemon.interface, QStringLiteral("ListNames")));
    if (!names.isValid()) {
        qWarning() << "Failed to get registered services: " << names.error();
        return;
    }
    const QStringList present = names.value();
    for (const QString &name : present)
        applyServicePolicies(name);
}

void PolicyEnforcer::enforcePolicy(PolicyEnforcementTask task)
{
    if (const PolicyHandler handler = policyHandlers.value(task.type))
        handler(task);

    const QStringList names = m_typeServices.value(task.type);
    for (const QString &name : names) {
        ServiceInfo &service = m_services[name];
        const QMutexLocker locker(&m_mutex);
        if (service.registered)
            service.handler(task);
        else
            service.pendingTasks.append(task);
    }
}

void PolicyEnforcer::applyServicePolicies(const QString &serviceName)
{
    const auto service = m_services.find(serviceName);
    if (service == m_services.end())
        return;
    const QMutexLocker locker(&m_mutex);
    service->registered = true;
    while (!service->pendingTasks.isEmpty())
        service->handler(service->pendingTasks.takeFirst());
}
