// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QDebug>
#include <QFile>
#include <QFileSystemWatcher>
#include <QMetaEnum>
#include <QSet>

#include <glib.h>
#include <govd/sourcerestriction.h>
#include <pellorapolicy/policyvalue.h>

#include <memory>
#include <optional>

namespace {

constexpr char Directory[] = "/etc/govd";
constexpr char Path[] = "/etc/govd/filelock.conf";

QStringList allPolicies()
{
    const auto types = QMetaEnum::fromType<Pellora::PolicyValue::PolicyType>();
    QStringList keys;
    for (int i = 0; i < types.keyCount(); ++i)
        keys.append(QString::fromLatin1(types.key(i)));
    return keys;
}

/// Reads which policies are locked. A missing file locks none; nothing when it is malformed. A
/// policy that does not exist is a fault, too: what was meant by it would stay open unnoticed.
std::optional<QSet<QString>> readLocks()
{
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(),
                                                                      g_key_file_unref);
    QSet<QString> locks;
    GError *error = nullptr;
    if (g_key_file_load_from_file(file.get(), Path, G_KEY_FILE_NONE, &error)) {
        gchar **keys = g_key_file_get_string_list(file.get(), "lock", "policies", nullptr, &error);
        for (gchar **key = keys; key && *key; ++key)
            locks.insert(QString::fromUtf8(*key));
        g_strfreev(keys);
    }
    const bool isRead = !error || g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_NOENT);
    g_clear_error(&error);
    const QStringList policies = allPolicies();
    const bool isSound =
        isRead && (locks - QSet<QString>(policies.begin(), policies.end())).isEmpty();
    return isSound ? std::optional(locks) : std::nullopt;
}

} // namespace

/// Locks the policies that are listed in /etc/govd/filelock.conf, and follows edits of that file:
///
///     [lock]
///     policies=CameraEnabled;BrowserEnabled
///
/// A malformed file changes nothing: what was locked stays locked until the file is sound again.
class FileLock : public SourceRestriction
{
    Q_OBJECT
    Q_INTERFACES(SourceRestriction)
    Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID)

public:
    FileLock();

    QString name() override { return QStringLiteral("filelock"); }
    bool policyIsLocked(const QString &policy) override { return m_locks.contains(policy); }
    /// All policies there are: which of them the file will list is not known yet, and the daemon
    /// asks only once.
    QStringList supportedPolicies() override { return allPolicies(); }

private:
    void follow();
    void update();

    QFileSystemWatcher m_watcher;
    QSet<QString> m_locks;
    bool m_isMalformed = false;
};

FileLock::FileLock()
{
    // The directory tells of a file that is replaced, the file of one that is written in place.
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FileLock::update);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileLock::update);
    update();
}

void FileLock::follow()
{
    m_watcher.addPath(QLatin1String(Directory));
    if (QFile::exists(QLatin1String(Path)))
        m_watcher.addPath(QLatin1String(Path));
}

void FileLock::update()
{
    follow(); // first, so that an edit made while reading is seen as the next one
    const std::optional<QSet<QString>> locks = readLocks();
    if (!locks) {
        if (!m_isMalformed)
            qWarning() << "filelock: malformed, locks stay as they are:" << Path;
        m_isMalformed = true;
        return;
    }
    m_isMalformed = false;

    const QSet<QString> changed = (*locks - m_locks) + (m_locks - *locks);
    m_locks = *locks;
    for (const QString &policy : changed)
        Q_EMIT policyIsLockedChanged(policy, m_locks.contains(policy));
}

#include "filelock.moc"
