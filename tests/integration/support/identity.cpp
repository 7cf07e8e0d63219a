// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/identity.h"

#include <grp.h>
#include <pwd.h>

namespace Support {

Identity Identity::root()
{
    return Identity();
}

Identity Identity::of(const char *name)
{
    const passwd *entry = getpwnam(name);
    if (!entry)
        qFatal("There is no user %s", name);

    Identity identity;
    identity.user = entry->pw_uid;
    identity.group = entry->pw_gid;
    int count = 64;
    identity.groups.resize(count);
    if (getgrouplist(name, entry->pw_gid, identity.groups.data(), &count) < 0)
        qFatal("User %s has too many groups", name);
    identity.groups.resize(count);
    return identity;
}

Identity Identity::inGroup(const char *name) const
{
    const ::group *entry = getgrnam(name);
    if (!entry)
        qFatal("There is no group %s", name);
    Identity changed = *this;
    changed.group = entry->gr_gid;
    return changed;
}

Identity Identity::asEffective() const
{
    Identity changed = *this;
    changed.effectiveOnly = true;
    return changed;
}

QStringList Identity::toArguments() const
{
    QStringList ids;
    for (const gid_t id : groups)
        ids.append(QString::number(id));
    return {QString::number(user), QString::number(group), ids.join(QLatin1Char(',')),
            effectiveOnly ? QStringLiteral("effective") : QStringLiteral("all")};
}

} // namespace Support
