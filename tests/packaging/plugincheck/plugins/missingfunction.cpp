// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

// Defined in no library and not in the daemon.
QString govdTestNowhere();

/// A lock plugin that loads, and ends the daemon when it is asked for its name.
class Plugin : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    QString name() override { return govdTestNowhere(); }
};

#include "missingfunction.moc"
