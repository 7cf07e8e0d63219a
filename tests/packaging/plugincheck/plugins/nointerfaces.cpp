// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

/// A lock plugin without Q_INTERFACES.
class Plugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)

public:
    QString name() override { return QStringLiteral("test"); }
    QStringList supportedPolicies() override { return {QStringLiteral("CameraEnabled")}; }
};

#include "nointerfaces.moc"
