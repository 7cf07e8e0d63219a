// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_IDENTITY_H
#define GOVD_TESTS_SUPPORT_IDENTITY_H

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVector>

#include <sys/types.h>

namespace Support {

/// The user and groups that a process runs as.
struct Identity
{
    uid_t user = 0;
    gid_t group = 0;
    QVector<gid_t> groups; ///< the supplementary ones
    bool effectiveOnly = false; ///< the real user and group stay root's

    /// The superuser, with no other group than its own.
    static Identity root();

    /// What a login of the user @p name gives. Ends the test program when there is no such user.
    static Identity of(const char *name);

    /// The same, with the group @p name in place of the primary one.
    Identity inGroup(const char *name) const;

    /// The same, as a set-user-id program gives it: effective ids only.
    Identity asEffective() const;

    /// For the command line of govd-test-caller.
    QStringList toArguments() const;
};

} // namespace Support

Q_DECLARE_METATYPE(Support::Identity)

#endif
