// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

/// A lock plugin without an interface identifier; Qt does not treat it as a plugin.
class Plugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "")
    Q_INTERFACES(SourceRestriction)

public:
    QString name() override { return QStringLiteral("test"); }
    QStringList supportedPolicies() override { return {QStringLiteral("CameraEnabled")}; }
};

#include "noiid.moc"
