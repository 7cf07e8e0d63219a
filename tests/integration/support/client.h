// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_CLIENT_H
#define GOVD_TESTS_SUPPORT_CLIENT_H

#include "support/bus.h"

#include <QStringList>
#include <QVariantList>

namespace Support {

/// A client of the daemon inside the test itself, as root: for many reads, where a process for
/// each would take long. For callers under other identities see Caller.
class Client
{
public:
    /// Calls @p method of the daemon's interface @p interface ("Policy" or "Switch").
    QDBusMessage call(const QString &interface, const QString &method,
                      const QVariantList &arguments = {});

    /// Calls @p method of the interface with the full name @p interface, or of none, of the
    /// daemon's object, or of the one at @p path.
    QDBusMessage callAny(const QString &interface, const QString &method,
                         const QVariantList &arguments = {},
                         const QString &path = QStringLiteral("/org/kvt/PolicyManager"));

    /// The value of a policy. The key must have one: nobody is answered about one that has none.
    QVariant policy(const QString &key);

    /// Whether the daemon leaves the question for each of these policies without an answer, by
    /// which it says that they have no value.
    bool haveNoValue(const QStringList &keys);

    QVariant switchValue(const QString &key);
    QStringList switches();

    bool setPolicy(const QString &key, const QVariant &value);

private:
    Bus m_bus;
};

} // namespace Support

#endif
