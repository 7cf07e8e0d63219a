// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "switchadaptor.h"

#include "log.h"
#include "policymanager.h"

SwitchAdaptor::SwitchAdaptor(PolicyManager *manager)
    : QDBusAbstractAdaptor(manager)
    , m_manager(manager)
{
}

QDBusVariant SwitchAdaptor::KeyValue(const QString &key)
{
    const Log::Limited limited;
    return QDBusVariant(m_manager->switchValue(key));
}

bool SwitchAdaptor::SetKeyValue(const QString &key, const QDBusVariant &value)
{
    return m_manager->setSwitchValue(key, value.variant());
}

QList<int> SwitchAdaptor::KeyPolicyTypes(const QString &key)
{
    const Log::Limited limited;
    return m_manager->switchPolicyTypes(key);
}

QStringList SwitchAdaptor::Keys()
{
    const Log::Limited limited;
    return m_manager->switches();
}
