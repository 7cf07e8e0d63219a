// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

/// A lock plugin that supports no policy.
class Plugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    QString name() override { return QStringLiteral("test"); }
};

#include "nopolicies.moc"
