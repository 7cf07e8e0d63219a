// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "storedvalues.h"

#include "names.h"

#include <QFile>
#include <QFileInfo>

#include <glib.h>

#include <memory>

namespace {

using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;

QMap<QString, bool> booleans(GKeyFile *file, const QByteArray &group)
{
    const std::unique_ptr<gchar *, decltype(&g_strfreev)> keys(
        g_key_file_get_keys(file, group.constData(), nullptr, nullptr), g_strfreev);
    QMap<QString, bool> result;
    for (gchar **key = keys.get(); key && *key; ++key) {
        GError *error = nullptr;
        const bool value = g_key_file_get_boolean(file, group.constData(), *key, &error);
        if (error)
            g_error_free(error);
        else
            result.insert(QString::fromLocal8Bit(*key), value);
    }
    return result;
}

} // namespace

QString StoredValues::stateName() const
{
    switch (state) {
    case State::Read:
        return QStringLiteral("read");
    case State::Missing:
        return QStringLiteral("missing");
    case State::Unreadable:
        return QStringLiteral("unreadable");
    case State::Malformed:
        return QStringLiteral("malformed");
    }
    Q_UNREACHABLE();
}

StoredValues readStoredValues(const QString &path)
{
    StoredValues result{path, StoredValues::State::Missing, {}};
    const QFileInfo info(path);
    const QFileInfo directory(info.path());
    // Without search permission on the directory, stat() fails as if the file were missing.
    const bool closed = directory.isDir() && !directory.isExecutable();
    if (!info.exists() && !closed)
        return result;

    QFile file(path);
    result.state = StoredValues::State::Unreadable;
    // Opening a pipe blocks until a process writes into it.
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return result;

    const QByteArray text = file.readAll();
    const KeyFile content(g_key_file_new(), g_key_file_unref);
    const bool loaded = g_key_file_load_from_data(
        content.get(), text.constData(), static_cast<gsize>(text.size()), G_KEY_FILE_NONE, nullptr);
    result.state = loaded ? StoredValues::State::Read : StoredValues::State::Malformed;
    if (loaded)
        result.values = booleans(content.get(), Names::ConfigurationGroup.toLocal8Bit());
    return result;
}
