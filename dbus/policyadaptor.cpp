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
    const QVariant value = m_manager->policyValue(key);
    // Nothing cannot be sent. Marked as answered later, the call gets no reply, and the bus library
    // writes nothing to the log, where everybody could fill it with unknown keys.
    if (!value.isValid())
        m_manager->setDelayedReply(true);
    return QDBusVariant(value);
}

bool PolicyAdaptor::SetKeyValue(const QString &key, const QDBusVariant &value)
{
    return m_manager->setPolicyValue(key, value.variant(), true);
}
