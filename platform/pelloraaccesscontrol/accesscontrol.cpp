// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "pelloraaccesscontrol/accesscontrol.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <grp.h>
#include <pwd.h>
#include <vector>

namespace {

/// Calls one of libc's reentrant look-ups with a buffer that grows until the entry fits.
template <typename Entry, typename LookUp>
bool findEntry(Entry &entry, std::vector<char> &buffer, LookUp lookUp)
{
    Entry *found = nullptr;
    int error = 0;
    buffer.resize(1024);
    while ((error = lookUp(&entry, buffer.data(), buffer.size(), &found)) == ERANGE)
        buffer.resize(buffer.size() * 2);
    return error == 0 && found;
}

bool isListed(const group &group, const passwd &user)
{
    for (char **member = group.gr_mem; *member; ++member) {
        if (std::strcmp(*member, user.pw_name) == 0)
            return true;
    }
    return false;
}

std::vector<gid_t> groupsOf(const passwd &user)
{
    int count = 32;
    std::vector<gid_t> groups(static_cast<std::size_t>(count));
    while (getgrouplist(user.pw_name, user.pw_gid, groups.data(), &count) < 0) {
        // The databases can change between two calls, so the returned count may be too small again.
        groups.resize(std::max(static_cast<std::size_t>(count), groups.size() * 2));
        count = static_cast<int>(groups.size());
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
}

} // namespace

bool pellora_access_control_hasgroup(uid_t uid, const char *group)
{
    struct group wanted;
    std::vector<char> groupText;
    if (!findEntry(wanted, groupText, [group](auto... rest) { return getgrnam_r(group, rest...); }))
        return false;

    passwd user;
    std::vector<char> userText;
    if (!findEntry(user, userText, [uid](auto... rest) { return getpwuid_r(uid, rest...); }))
        return false;

    if (user.pw_gid == wanted.gr_gid || isListed(wanted, user))
        return true;
    // The group's entry can lack members: several groups can share the number, and a directory
    // service can know groups by user only. This queries every database, so it comes last.
    const std::vector<gid_t> groups = groupsOf(user);
    return std::find(groups.begin(), groups.end(), wanted.gr_gid) != groups.end();
}
