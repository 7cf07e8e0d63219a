// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ENFORCER_ENFORCERMANAGER_H
#define GOVD_ENFORCER_ENFORCERMANAGER_H

#include <QObject>
#include <QVariant>

/// The manager of an enforcer as handlers see it: the source of other policies' effective values.
class EnforcerManager : public QObject
{
public:
    using QObject::QObject;

    /// The effective value of the policy @p key; invalid when there is none.
    virtual QVariant policyValue(const QString &key) = 0;
};

/// The manager whose enforcer was built last. Null until an enforcer has been built.
extern EnforcerManager *enforcerManager;

#endif
