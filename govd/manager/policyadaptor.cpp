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
    // QtDBus cannot send an invalid variant and logs two warnings for each attempt, with which any
    // caller could fill the log. With a delayed reply nothing is sent either, and nothing logged.
    if (!value.isValid())
        m_manager->setDelayedReply(true);
    return QDBusVariant(value);
}

bool PolicyAdaptor::SetKeyValue(const QString &key, const QDBusVariant &value)
{
    return m_manager->setPolicyValue(key, value.variant(), true);
}
