// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef LOCKPLUGIN_H
#define LOCKPLUGIN_H

#include "control.h"

#include <govd/sourcerestriction.h>

/// A source restriction that a test controls.
class LockPlugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    LockPlugin();

    QString name() override;
    bool policyIsLocked(const QString &policy) override;
    QStringList supportedPolicies() override;

private:
    void obey(const QJsonObject &order);
    void announce(const QJsonObject &order);

    Control m_control;
};

#endif
