// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

/// A sound lock plugin, one of whose two policies is locked.
class Plugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    QString name() override { return QStringLiteral("test"); }
    QStringList supportedPolicies() override
    {
        return {QStringLiteral("CameraEnabled"), QStringLiteral("BrowserEnabled")};
    }
    bool policyIsLocked(const QString &policy) override
    {
        return policy == QLatin1String("CameraEnabled");
    }
};

#include "locked.moc"
