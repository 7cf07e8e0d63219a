// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

/// A lock plugin without a name, for policies that do not exist.
class Plugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    QStringList supportedPolicies() override
    {
        return {QStringLiteral("NoPolicy"), QStringLiteral("cameraenabled"),
                QStringLiteral("CameraEnabled"), QStringLiteral("CameraEnabled")};
    }
};

#include "strangepolicies.moc"
