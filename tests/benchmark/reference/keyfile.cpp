// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/reference/keyfile.h"

#include <glib.h>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace {

constexpr char Group[] = "policy";

using File = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;

void require(gboolean success, const char *action)
{
    if (!success)
        throw std::runtime_error(action);
}

File load(const std::string &path)
{
    File file(g_key_file_new(), g_key_file_unref);
    if (access(path.c_str(), F_OK) == 0) {
        require(g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr),
                "cannot load the key file");
    }
    return file;
}

} // namespace

void saveKeyValue(const std::string &path, const std::string &key, bool value)
{
    const File file = load(path);
    g_key_file_set_boolean(file.get(), Group, key.c_str(), value);
    require(g_key_file_save_to_file(file.get(), path.c_str(), nullptr), "cannot save the key file");
}

std::map<std::string, bool> loadValues(const std::string &path)
{
    const File file = load(path);
    const std::unique_ptr<gchar *, decltype(&g_strfreev)> keys(
        g_key_file_get_keys(file.get(), Group, nullptr, nullptr), g_strfreev);
    std::map<std::string, bool> values;
    for (gchar **key = keys.get(); key && *key; ++key)
        values[*key] = g_key_file_get_boolean(file.get(), Group, *key, nullptr);
    return values;
}
