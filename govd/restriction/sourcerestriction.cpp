// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "sourcerestriction.h"

SourceRestriction::SourceRestriction() = default;

SourceRestriction::~SourceRestriction() = default;

QString SourceRestriction::name()
{
    return QString();
}

bool SourceRestriction::policyIsLocked(const QString &policy)
{
    Q_UNUSED(policy)
    return false;
}

QStringList SourceRestriction::supportedPolicies()
{
    return QStringList();
}
