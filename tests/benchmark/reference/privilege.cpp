// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/privilege.h"

#include <cstring>
#include <grp.h>
#include <pwd.h>
#include <string>
#include <sys/stat.h>

bool isPrivileged(unsigned pid)
{
    char buffer[4096];
    struct stat process;
    if (stat(("/proc/" + std::to_string(pid)).c_str(), &process) != 0)
        return false;
    group groupEntry;
    group *foundGroup = nullptr;
    getgrgid_r(process.st_gid, &groupEntry, buffer, sizeof buffer, &foundGroup);
    if (foundGroup && std::strcmp(foundGroup->gr_name, "privileged") == 0)
        return true;
    passwd userEntry;
    passwd *foundUser = nullptr;
    getpwuid_r(process.st_uid, &userEntry, buffer, sizeof buffer, &foundUser);
    return foundUser && std::strcmp(foundUser->pw_name, "root") == 0;
}
