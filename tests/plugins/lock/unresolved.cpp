// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <govd/sourcerestriction.h>

// Defined in no library and not in the daemon. A variable, because a function is resolved only when
// it is called.
extern int govdTestNowhere;

/// A lock plugin that cannot be loaded.
class Unresolved : public SourceRestriction
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)
    Q_INTERFACES(SourceRestriction)

public:
    QString name() override { return QString::number(govdTestNowhere); }
};

#include "unresolved.moc"
