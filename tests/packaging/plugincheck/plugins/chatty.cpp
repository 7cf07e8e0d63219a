// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

/// A lock plugin that announces a policy while it is asked about it.
class Plugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    QString name() override { return QStringLiteral("test"); }
    QStringList supportedPolicies() override { return {QStringLiteral("CameraEnabled")}; }
    bool policyIsLocked(const QString &policy) override
    {
        Q_EMIT policyIsLockedChanged(policy, true);
        return true;
    }
};

#include "chatty.moc"
