// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/statefile.h"

#include <QFileInfo>
#include <QMetaEnum>

#include <glib.h>
#include <pellorapolicy/accessswitchplugin.h>
#include <pellorapolicy/policyvalue.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <utility>

#include <sys/stat.h>

namespace {

struct Switch
{
    bool value = true;
    QList<int> policies;
};

using Switches = QHash<QString, Switch>;
using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;

/// One switch from its group; nothing when a value is missing or no boolean, or a policy unknown.
std::optional<Switch> readSwitch(GKeyFile *file, const char *name)
{
    GError *error = nullptr;
    Switch result;
    result.value = g_key_file_get_boolean(file, name, "value", &error);
    gchar **keys = nullptr;
    if (!error)
        keys = g_key_file_get_string_list(file, name, "policies", nullptr, &error);
    bool isSound = !error;
    for (gchar **key = keys; key && *key; ++key) {
        const int type = QMetaEnum::fromType<Pellora::PolicyValue::PolicyType>().keyToValue(*key);
        result.policies.append(type);
        isSound = isSound && type > 0;
    }
    g_strfreev(keys);
    g_clear_error(&error);
    return isSound ? std::optional(result) : std::nullopt;
}

/// All switches in the text of a file; nothing when it is malformed, for example without a group.
std::optional<Switches> switchesIn(const QByteArray &text)
{
    const KeyFile file(g_key_file_new(), g_key_file_unref);
    bool isSound = g_key_file_load_from_data(
        file.get(), text.constData(), static_cast<gsize>(text.size()), G_KEY_FILE_NONE, nullptr);
    gchar **names = g_key_file_get_groups(file.get(), nullptr);
    isSound = isSound && *names;

    Switches switches;
    for (gchar **name = names; *name && isSound; ++name) {
        const std::optional<Switch> entry = readSwitch(file.get(), *name);
        isSound = entry.has_value();
        switches.insert(QString::fromUtf8(*name), entry.value_or(Switch()));
    }
    g_strfreev(names);
    return isSound ? std::optional(switches) : std::nullopt;
}

bool isSound(const QByteArray &text)
{
    return switchesIn(text).has_value();
}

/// Writes the value to the file, whose text is well formed, and keeps its comments. False when the
/// file could not be written.
bool writeValue(const StateFile &stateFile, const QString &name, bool value)
{
    const QByteArray text = stateFile.content();
    const KeyFile file(g_key_file_new(), g_key_file_unref);
    g_key_file_load_from_data(file.get(), text.constData(), static_cast<gsize>(text.size()),
                              G_KEY_FILE_KEEP_COMMENTS, nullptr);
    g_key_file_set_boolean(file.get(), qUtf8Printable(name), "value", value);
    gsize size = 0;
    const std::unique_ptr<char, decltype(&g_free)> data(
        g_key_file_to_data(file.get(), &size, nullptr), g_free);
    // Replaces the target of a link, not the link, and keeps the file's permissions.
    const QByteArray path = QFileInfo(stateFile.path()).canonicalFilePath().toLocal8Bit();
    struct stat status;
    return stat(path.constData(), &status) == 0
        && g_file_set_contents_full(path.constData(), data.get(), static_cast<gssize>(size),
                                    G_FILE_SET_CONTENTS_CONSISTENT,
                                    static_cast<int>(status.st_mode & 0777), nullptr);
}

} // namespace

/// Keeps access switches in /etc/govd/fileswitch.conf, one group for each, and applies edits of
/// that file at once:
///
///     [Parental control]
///     policies=BrowserEnabled;SideLoadingEnabled
///     value=true
///
/// While the file is damaged, cannot be read or is missing, the switches stay as they were, also
/// when the daemon starts. Removing the file while the daemon runs removes the switches. Failure
/// codes are those of errno.h: ENOENT for an unknown switch, EIO when the file is not good or
/// cannot be written.
class FileSwitch : public Pellora::AccessSwitchPlugin
{
    Q_OBJECT
    Q_INTERFACES(Pellora::AccessSwitchPlugin)
    Q_PLUGIN_METADATA(IID "org.kvt.brinos.AccessSwitchPlugin/1.0")

public:
    FileSwitch();

    QVariant keyValue(const QString &key) override;
    int setKeyValue(const QString &key, const QVariant &value) override;
    QHash<QString, QList<int>> keyPolicyTypes() const override;

private:
    void apply();
    void release(const Switches &next);

    StateFile m_file;
    Switches m_switches;
};

FileSwitch::FileSwitch()
    : m_file(QStringLiteral("fileswitch"), isSound)
{
    apply(); // the last good content
    connect(&m_file, &StateFile::changed, this, &FileSwitch::apply);
    m_file.update();
}

QVariant FileSwitch::keyValue(const QString &key)
{
    const auto entry = m_switches.constFind(key);
    return entry == m_switches.constEnd() ? QVariant(ENOENT) : QVariant(entry->value);
}

int FileSwitch::setKeyValue(const QString &key, const QVariant &value)
{
    m_file.update(); // applies an edit that the file system has not reported yet
    if (!m_switches.contains(key))
        return ENOENT;
    if (!m_file.isGood() || !writeValue(m_file, key, value.toBool()))
        return EIO;
    m_file.update(); // announces the change at once, before this call returns
    return 0;
}

QHash<QString, QList<int>> FileSwitch::keyPolicyTypes() const
{
    QHash<QString, QList<int>> table;
    for (auto entry = m_switches.begin(); entry != m_switches.end(); ++entry)
        table.insert(entry.key(), entry->policies);
    return table;
}

void FileSwitch::apply()
{
    const Switches switches = switchesIn(m_file.content()).value_or(Switches());
    release(switches);
    const Switches before = std::exchange(m_switches, switches);
    for (auto entry = switches.begin(); entry != switches.end(); ++entry) {
        const auto old = before.constFind(entry.key());
        if (old == before.constEnd() || old->value != entry->value)
            Q_EMIT keyValueChanged(entry.key(), entry->value);
    }
}

/// Switches on each switch that @p next lacks or lets govern other policies, while the policies
/// that it governed are still known: otherwise they would stay off.
void FileSwitch::release(const Switches &next)
{
    const QStringList keys = m_switches.keys();
    for (const QString &key : keys) {
        Switch &entry = m_switches[key];
        const auto kept = next.constFind(key);
        if (!entry.value && (kept == next.constEnd() || kept->policies != entry.policies)) {
            entry.value = true;
            Q_EMIT keyValueChanged(key, true);
        }
    }
}

#include "fileswitch.moc"
