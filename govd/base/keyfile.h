// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BASE_KEYFILE_H
#define GOVD_BASE_KEYFILE_H

#include <QString>

#include <glib.h>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

struct GErrorDeleter
{
    void operator()(GError *error) const { g_error_free(error); }
};

/// GLib's error of a key-file operation; null when it succeeded.
using KeyFileError = std::unique_ptr<GError, GErrorDeleter>;

/// A configuration file in the format of GLib's key files, in memory.
///
/// Comments, blank lines and translations are not kept. Texts are converted to and from the local
/// 8-bit encoding.
class KeyFile
{
public:
    KeyFile();

    /// Whether something is at @p path. True also when that cannot be found out, for example
    /// without permission: a new file in its place would lose every value in it.
    static bool exists(const QString &path);

    /// Replaces the content by that of the file at @p path. Fails when it is missing, unreadable,
    /// no regular file, or malformed; of a malformed file, the keys before the fault are kept.
    KeyFileError load(const QString &path);

    /// Writes the content to a new file and renames it to @p path.
    KeyFileError save(const QString &path) const;

    /// The boolean of @p key, or nothing when it is missing or no boolean.
    std::optional<bool> boolean(const QString &group, const QString &key) const;

    /// The keys of @p group that are booleans, in file order; none when there is no such group.
    std::vector<std::pair<QString, bool>> booleans(const QString &group) const;

    /// Sets @p key, at its place or at the end of its group. Fails, and changes nothing, when the
    /// key would not read back from a key file.
    KeyFileError setBoolean(const QString &group, const QString &key, bool value);

private:
    struct Deleter
    {
        void operator()(GKeyFile *file) const { g_key_file_unref(file); }
    };

    std::unique_ptr<GKeyFile, Deleter> m_file;
};

/// Whether @p key in @p group would read back from the file at @p path, which need not exist. If
/// not, logs the same warning as saveKeyValue(), which can still fail for other reasons.
bool canSaveKey(const QString &path, const QString &group, const QString &key);

/// Sets @p key to @p value in the file at @p path, creates the file if there is none, and keeps its
/// other keys and groups.
///
/// False, after a warning with the reason, when the file exists and cannot be loaded, when the key
/// would not read back, or when the file cannot be written; the file is then unchanged.
bool saveKeyValue(const QString &path, const QString &group, const QString &key, bool value);

#endif
