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

/// What went wrong in a key-file operation, as GLib tells it; null when nothing did.
using KeyFileError = std::unique_ptr<GError, GErrorDeleter>;

/// A configuration file in the format of GLib's key files, in memory.
///
/// Comments, blank lines and translations are not kept. Texts are converted to and from the local
/// 8-bit encoding.
class KeyFile
{
public:
    KeyFile();

    /// Whether something is at @p path. What cannot be looked at counts as there: taken for
    /// missing, it would be replaced by a new file, and every value in it would be lost.
    static bool exists(const QString &path);

    /// Replaces the content by that of the file at @p path. Fails when it is missing, unreadable,
    /// no regular file, or malformed; of a malformed file, what stands before the fault is kept.
    KeyFileError load(const QString &path);

    /// Writes the content to a new file and renames it to @p path.
    KeyFileError save(const QString &path) const;

    /// The boolean of @p key, or nothing when it is missing or no boolean.
    std::optional<bool> boolean(const QString &group, const QString &key) const;

    /// The keys of @p group that are booleans, in file order; none when there is no such group.
    std::vector<std::pair<QString, bool>> booleans(const QString &group) const;

    /// Sets @p key, at its place or at the end of its group. Fails, and changes nothing, when a
    /// key file cannot hold such a key and give it back.
    KeyFileError setBoolean(const QString &group, const QString &key, bool value);

private:
    struct Deleter
    {
        void operator()(GKeyFile *file) const { g_key_file_unref(file); }
    };

    std::unique_ptr<GKeyFile, Deleter> m_file;
};

/// Whether the file at @p path, there or not, can hold @p key in @p group and give it back. False
/// after the warning of saveKeyValue(), which would refuse it; it can still fail for other reasons.
bool canSaveKey(const QString &path, const QString &group, const QString &key);

/// Records the boolean @p value of @p key in the file at @p path, which is created if need be, and
/// keeps all its other keys and groups.
///
/// False, after a warning that says why, when the file exists and cannot be loaded, when it cannot
/// hold the key, or when it cannot be written; the file is then as it was.
bool saveKeyValue(const QString &path, const QString &group, const QString &key, bool value);

#endif
