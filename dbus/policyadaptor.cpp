// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "dbus/policyadaptor.h"

#include "daemon/policymanager.h"

PolicyAdaptor::PolicyAdaptor(PolicyManager *manager)
    : QDBusAbstractAdaptor(manager)
    , m_manager(manager)
{
}

QDBusVariant PolicyAdaptor::KeyValue(const QString &key)
{
    return QDBusVariant(m_manager->policyValue(key));
}

bool PolicyAdaptor::SetKeyValue(const QString &key, const QDBusVariant &value)
{
    return m_manager->setPolicyValue(key, value.variant(), true);
}
