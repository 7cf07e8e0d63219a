// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/markers.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void mark(const std::string &path, bool present)
{
    const bool exists = access(path.c_str(), F_OK) == 0;
    if (present && !exists)
        close(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    else if (!present && exists)
        unlink(path.c_str());
}

void markFeature(const std::string &directory, const char *name, bool enabled)
{
    if (enabled)
        mkdir(directory.c_str(), 0755);
    mark(directory + "/" + name, enabled);
}

} // namespace

void markPolicy(const std::string &directory, const std::string &key, bool value)
{
    if (key == "CameraEnabled")
        markFeature(directory, "camera_enabled", value);
    else if (key == "UserReportExportEnabled")
        markFeature(directory, "user_report_enabled", value);
    else if (key == "DeveloperShellEnabled")
        mark(directory + "/.disable", !value);
}
