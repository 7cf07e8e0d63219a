// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "keyfile.h"

#include <QDebug>

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>

namespace {

template <typename Operation> KeyFileError errorOf(Operation operation)
{
    GError *error = nullptr;
    operation(&error);
    return KeyFileError(error);
}

std::optional<bool> booleanOf(GKeyFile *file, const char *group, const char *key)
{
    bool value = false;
    const KeyFileError error =
        errorOf([&](GError **slot) { value = g_key_file_get_boolean(file, group, key, slot); });
    return error ? std::nullopt : std::optional(value);
}

KeyFileError parseError(const QString &message)
{
    return KeyFileError(g_error_new_literal(G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_PARSE,
                                            message.toUtf8().constData()));
}

/// @p text in quotes and with escapes, so that it stays on one line of the log.
QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

/// Characters that mean something in a key file: "=" ends the key, brackets enclose a group or a
/// locale, control characters include the line break. A key with one could change other keys.
bool isForbidden(QChar character)
{
    return character.category() == QChar::Other_Control
        || QStringLiteral("=[]").contains(character);
}

/// Whether @p key reads back from a line of a key file. GLib writes keys that its parser rejects,
/// and one such line makes the whole file unreadable, with every policy in it.
bool readsBack(const QByteArray &group, const QByteArray &key, bool isFirstGroup)
{
    // GLib reads "Encoding" in the first group as the name of the file's character set.
    const QByteArray text = (isFirstGroup ? "[" : "[first]\n[") + group + "]\n" + key + "=true\n";
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(),
                                                                      g_key_file_unref);
    return g_key_file_load_from_data(file.get(), text.constData(), static_cast<gsize>(text.size()),
                                     G_KEY_FILE_NONE, nullptr)
        && g_key_file_get_boolean(file.get(), group.constData(), key.constData(), nullptr);
}

bool isLetterOrDigit(QChar character)
{
    const ushort code = character.unicode();
    return (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z')
        || (code >= '0' && code <= '9');
}

/// Fast path without a trial parse: ASCII letters and digits, as in policy keys, always read back.
bool isPlain(const QString &key)
{
    return !key.isEmpty() && key != QLatin1String("Encoding")
        && std::all_of(key.begin(), key.end(), isLetterOrDigit);
}

bool canHold(GKeyFile *file, const QByteArray &group, const QString &key)
{
    if (isPlain(key))
        return true;
    const QByteArray localKey = key.toLocal8Bit();
    if (QString::fromLocal8Bit(localKey) != key || std::any_of(key.begin(), key.end(), isForbidden))
        return false;
    const std::unique_ptr<gchar, decltype(&g_free)> first(g_key_file_get_start_group(file), g_free);
    return readsBack(group, localKey, !first || group == first.get());
}

/// Whether saving succeeded; logs the error otherwise.
bool hasSucceeded(const KeyFileError &error)
{
    if (error)
        qWarning() << "Error saving key file" << error->code << error->message;
    return !error;
}

} // namespace

KeyFile::KeyFile()
    : m_file(g_key_file_new())
{
}

bool KeyFile::exists(const QString &path)
{
    // A dangling link (ENOENT) or a circular one (ELOOP) holds no values that could be lost.
    struct stat status;
    return stat(path.toLocal8Bit().constData(), &status) == 0
        || (errno != ENOENT && errno != ENOTDIR && errno != ELOOP);
}

KeyFileError KeyFile::load(const QString &path)
{
    // GLib checks this too, but after open(), which blocks on a pipe that has no writer.
    const QByteArray localPath = path.toLocal8Bit();
    struct stat status;
    if (stat(localPath.constData(), &status) == 0 && !S_ISREG(status.st_mode))
        return parseError(QStringLiteral("Not a regular file"));

    return errorOf([&](GError **error) {
        g_key_file_load_from_file(m_file.get(), localPath.constData(), G_KEY_FILE_NONE, error);
    });
}

KeyFileError KeyFile::save(const QString &path) const
{
    return errorOf([&](GError **error) {
        g_key_file_save_to_file(m_file.get(), path.toLocal8Bit().constData(), error);
    });
}

std::optional<bool> KeyFile::boolean(const QString &group, const QString &key) const
{
    return booleanOf(m_file.get(), group.toLocal8Bit().constData(), key.toLocal8Bit().constData());
}

std::vector<std::pair<QString, bool>> KeyFile::booleans(const QString &group) const
{
    const QByteArray localGroup = group.toLocal8Bit();
    const std::unique_ptr<gchar *, decltype(&g_strfreev)> keys(
        g_key_file_get_keys(m_file.get(), localGroup.constData(), nullptr, nullptr), g_strfreev);
    std::vector<std::pair<QString, bool>> result;
    for (gchar **key = keys.get(); key && *key; ++key) {
        if (const auto value = booleanOf(m_file.get(), localGroup.constData(), *key))
            result.emplace_back(QString::fromLocal8Bit(*key), *value);
    }
    return result;
}

KeyFileError KeyFile::setBoolean(const QString &group, const QString &key, bool value)
{
    const QByteArray localGroup = group.toLocal8Bit();
    if (!canHold(m_file.get(), localGroup, key))
        return parseError(QStringLiteral("Key file cannot hold the key %1").arg(quoted(key)));
    g_key_file_set_boolean(m_file.get(), localGroup.constData(), key.toLocal8Bit().constData(),
                           value);
    return nullptr;
}

bool canSaveKey(const QString &path, const QString &group, const QString &key)
{
    if (isPlain(key))
        return true;
    KeyFile file;
    file.load(path); // saveKeyValue() reports a failure
    return hasSucceeded(file.setBoolean(group, key, false));
}

bool saveKeyValue(const QString &path, const QString &group, const QString &key, bool value)
{
    KeyFile file;
    if (KeyFile::exists(path)) {
        if (const KeyFileError error = file.load(path)) {
            qWarning() << "Error loading key file" << error->code << error->message;
            return false;
        }
    }
    KeyFileError error = file.setBoolean(group, key, value);
    if (!error)
        error = file.save(path);
    return hasSucceeded(error);
}
