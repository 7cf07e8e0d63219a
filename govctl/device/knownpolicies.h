// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_KNOWNPOLICIES_H
#define GOVCTL_KNOWNPOLICIES_H

#include "result.h"

#include <QString>
#include <QStringList>

/// The policies of this platform, as its enumeration lists them. The value 0, which stands for no
/// policy, is left out.
namespace KnownPolicies {

/// All keys, in the order of the enumeration.
QStringList keys();

/// The number of the policy @p key, compared exactly; 0 when there is no such policy.
int type(const QString &key);

/// The key of the policy @p type; its number in digits when the platform has no key for it.
QString key(int type);

/// The keys that @p pattern names: one key, or those that a pattern of the shell matches.
QStringList matching(const QString &pattern);

/// The keys that at least one of @p patterns names, in the order of the enumeration; all keys when
/// there are no patterns.
QStringList matching(const QStringList &patterns);

} // namespace KnownPolicies

/// The failure for the unknown policy @p key, with the policies whose keys look like it or whose
/// subject has that name.
Failure unknownPolicy(const QString &key);

#endif
