// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "pelloraaccesscontrol/accesscontrol.h"

#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <optional>
#include <pwd.h>
#include <string>
#include <vector>

namespace {

/// Runs one of libc's reentrant look-ups with a buffer that grows until the entry fits.
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

std::optional<gid_t> groupId(const char *name)
{
    group entry;
    std::vector<char> buffer;
    const bool found =
        findEntry(entry, buffer, [name](auto... rest) { return getgrnam_r(name, rest...); });
    return found ? std::optional(entry.gr_gid) : std::nullopt;
}

std::vector<gid_t> groupsOf(const passwd &user)
{
    int count = 32;
    std::vector<gid_t> groups(static_cast<std::size_t>(count));
    while (getgrouplist(user.pw_name, user.pw_gid, groups.data(), &count) < 0) {
        // The count asked for can be outdated by the next call: grow by at least the double.
        groups.resize(std::max(static_cast<std::size_t>(count), groups.size() * 2));
        count = static_cast<int>(groups.size());
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
}

} // namespace

bool pellora_access_control_hasgroup(uid_t uid, const char *group)
{
    const std::optional<gid_t> wanted = groupId(group);
    if (!wanted)
        return false;

    passwd user;
    std::vector<char> buffer;
    if (!findEntry(user, buffer, [uid](auto... rest) { return getpwuid_r(uid, rest...); }))
        return false;

    const std::vector<gid_t> groups = groupsOf(user);
    return std::find(groups.begin(), groups.end(), *wanted) != groups.end();
}
