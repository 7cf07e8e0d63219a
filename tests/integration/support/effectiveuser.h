// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_SUPPORT_EFFECTIVEUSER_H
#define GOVD_TESTS_SUPPORT_EFFECTIVEUSER_H

#include "support/identity.h"

#include <unistd.h>

namespace Support {

/// Makes the test program run as another user and group until this object is gone: a process that
/// is somebody else now than when it connected to the bus.
class EffectiveUser
{
    Q_DISABLE_COPY(EffectiveUser)

public:
    explicit EffectiveUser(const Identity &identity)
        : m_user(geteuid())
        , m_group(getegid())
    {
        // As root first, because only root may become anybody.
        if (seteuid(0) != 0 || setegid(identity.group) != 0 || seteuid(identity.user) != 0)
            qFatal("Cannot become user %u", identity.user);
    }

    ~EffectiveUser()
    {
        if (seteuid(0) != 0 || setegid(m_group) != 0 || seteuid(m_user) != 0)
            qFatal("Cannot become user %u again", m_user);
    }

private:
    uid_t m_user;
    gid_t m_group;
};

} // namespace Support

#endif
