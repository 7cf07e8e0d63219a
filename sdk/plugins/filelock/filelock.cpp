// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/statefile.h"

#include <QMetaEnum>
#include <QSet>

#include <glib.h>
#include <govd/sourcerestriction.h>
#include <pellorapolicy/policyvalue.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace {

const QLatin1String Name("filelock");

QStringList allPolicies()
{
    const auto types = QMetaEnum::fromType<Pellora::PolicyValue::PolicyType>();
    QStringList keys;
    for (int i = 0; i < types.keyCount(); ++i) {
        if (types.value(i) != 0) // no policy
            keys.append(QString::fromLatin1(types.key(i)));
    }
    return keys;
}

/// The policies that the text of a file locks; nothing when it is malformed. An unknown key is a
/// fault, because the policy that was meant would stay unlocked.
std::optional<QSet<QString>> locksIn(const QByteArray &text)
{
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(),
                                                                      g_key_file_unref);
    if (!g_key_file_load_from_data(file.get(), text.constData(), static_cast<gsize>(text.size()),
                                   G_KEY_FILE_NONE, nullptr))
        return std::nullopt;
    gchar **keys = g_key_file_get_string_list(file.get(), "lock", "policies", nullptr, nullptr);
    if (!keys)
        return std::nullopt;
    QSet<QString> locks;
    for (gchar **key = keys; *key; ++key)
        locks.insert(QString::fromUtf8(*key));
    g_strfreev(keys);
    const QStringList policies = allPolicies();
    const bool isSound = std::all_of(locks.begin(), locks.end(),
                                     [&](const QString &key) { return policies.contains(key); });
    return isSound ? std::optional(locks) : std::nullopt;
}

bool isSound(const QByteArray &text)
{
    return locksIn(text).has_value();
}

} // namespace

/// Locks the policies that /etc/govd/filelock.conf lists, and applies edits of that file at once:
///
///     [lock]
///     policies=CameraEnabled;BrowserEnabled
///
/// While the file is damaged, cannot be read or is missing, what was locked stays locked, also when
/// the daemon starts. Removing the file while the daemon runs unlocks all.
class FileLock : public SourceRestriction
{
    Q_OBJECT
    Q_INTERFACES(SourceRestriction)
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)

public:
    FileLock();

    QString name() override { return Name; }
    bool policyIsLocked(const QString &policy) override { return m_locks.contains(policy); }
    /// All policies, because the daemon calls this once and the file can list others later.
    QStringList supportedPolicies() override { return allPolicies(); }

private:
    void apply();

    StateFile m_file;
    QSet<QString> m_locks;
};

FileLock::FileLock()
    : m_file(Name, isSound)
{
    apply(); // the last good content
    connect(&m_file, &StateFile::changed, this, &FileLock::apply);
    m_file.update();
}

void FileLock::apply()
{
    const QSet<QString> locks = locksIn(m_file.content()).value_or(QSet<QString>());
    const QSet<QString> before = std::exchange(m_locks, locks);
    const QSet<QString> changed = (locks - before) + (before - locks);
    for (const QString &policy : changed)
        Q_EMIT policyIsLockedChanged(policy, m_locks.contains(policy));
}

#include "filelock.moc"
