// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policyadaptor.h"

#include "log.h"
#include "policymanager.h"

PolicyAdaptor::PolicyAdaptor(PolicyManager *manager)
    : QDBusAbstractAdaptor(manager)
    , m_manager(manager)
{
}

QDBusVariant PolicyAdaptor::KeyValue(const QString &key)
{
    const Log::Limited limited;
    const QVariant value = m_manager->policyValue(key);
    // An invalid variant cannot be sent. Marked as answered later, the call gets no reply either,
    // and the bus library writes no warnings, with which everybody could fill the log.
    if (!value.isValid())
        m_manager->setDelayedReply(true);
    return QDBusVariant(value);
}

bool PolicyAdaptor::SetKeyValue(const QString &key, const QDBusVariant &value)
{
    return m_manager->setPolicyValue(key, value.variant(), true);
}
