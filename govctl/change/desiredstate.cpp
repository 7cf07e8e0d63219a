// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "desiredstate.h"

#include "knownpolicies.h"
#include "text.h"

#include <QFile>
#include <QJsonArray>
#include <QSet>

#include <glib.h>

#include <memory>

namespace {

const QLatin1String PolicyGroup("policy");
const QLatin1String SwitchGroup("switch");

using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;
using Strings = std::unique_ptr<gchar *, decltype(&g_strfreev)>;

Failure badFile(const QString &path, const QString &what)
{
    constexpr int Longest = 200; // a message of the reader's can hold a whole line of the file
    const QString text = what.size() > Longest ? what.left(Longest) + QStringLiteral("...") : what;
    return {ExitCode::Usage,
            QStringLiteral("bad-file"),
            QStringLiteral("%1: %2").arg(printable(path), printable(text)),
            {}};
}

Result<QByteArray> contentOf(const QString &path)
{
    constexpr qint64 LargestSize = 1'000'000; // a device such as /dev/zero has no end
    if (path.isEmpty())
        return badFile(quoted(path), QStringLiteral("a file without a name"));
    QFile file(path);
    const bool isOpen = path == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                   : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        return badFile(path, file.errorString());
    const QByteArray content = file.read(LargestSize + 1);
    if (file.error() != QFileDevice::NoError)
        return badFile(path, file.errorString());
    if (content.size() > LargestSize)
        return badFile(path, QStringLiteral("larger than a megabyte"));
    if (content.contains('\0'))
        return badFile(path, QStringLiteral("not a text: it holds a NUL"));
    return content;
}

/// Keys in the form of translations, like "key[de]", are kept: they are mistakes or switches.
bool load(const KeyFile &file, const QByteArray &content, GError **error)
{
    return g_key_file_load_from_data(file.get(), content.constData(),
                                     static_cast<gsize>(content.size()),
                                     G_KEY_FILE_KEEP_TRANSLATIONS, error);
}

/// The first key that a group of the well-formed @p content has twice; the reader would take the
/// last value.
QByteArray repeatedKey(const QByteArray &content)
{
    QByteArray group;
    QSet<QByteArray> seen;
    const QList<QByteArray> lines = content.split('\n');
    for (const QByteArray &each : lines) {
        const QByteArray line = each.trimmed();
        if (line.startsWith('['))
            group = line;
        if (line.startsWith('[') || line.startsWith('#') || line.isEmpty())
            continue;
        QByteArray key = line.left(line.indexOf('=')).trimmed();
        if (seen.contains(group + key))
            return key;
        seen.insert(group + key);
    }
    return {};
}

/// Whether a line with @p key is read as this key and nothing else.
bool canBeKey(const QString &key)
{
    const KeyFile file(g_key_file_new(), g_key_file_unref);
    if (!load(file, QStringLiteral("[%1]\n%2=true\n").arg(SwitchGroup, key).toUtf8(), nullptr))
        return false;
    gsize count = 0;
    const Strings keys(g_key_file_get_keys(file.get(), SwitchGroup.latin1(), &count, nullptr),
                       g_strfreev);
    return count == 1 && QString::fromUtf8(keys.get()[0]) == key;
}

/// The value that the daemon has stored for @p policy, if it is known and no lock forces it off.
std::optional<bool> exported(const PolicyState &policy)
{
    switch (policy.reason()) {
    case Reason::Stored:
    case Reason::File:
        return policy.value;
    case Reason::Switch:
        return policy.stored;
    case Reason::Lock:
    case Reason::NoValue:
    case Reason::Unknown:
        return std::nullopt;
    }
    Q_UNREACHABLE();
}

QString groupText(const QString &name, const QStringList &keys, const QMap<QString, bool> &values)
{
    if (values.isEmpty())
        return {};
    QString text = QStringLiteral("[%1]\n").arg(name);
    for (const QString &key : keys) {
        if (const auto value = values.constFind(key); value != values.constEnd())
            text += QStringLiteral("%1=%2\n").arg(
                key, *value ? QStringLiteral("true") : QStringLiteral("false"));
    }
    return text;
}

QJsonObject toObject(const QMap<QString, bool> &values)
{
    QJsonObject result;
    for (auto value = values.begin(); value != values.end(); ++value)
        result.insert(value.key(), value.value());
    return result;
}

Result<QMap<QString, bool>> readGroup(GKeyFile *file, const char *group, const QString &path)
{
    const Strings keys(g_key_file_get_keys(file, group, nullptr, nullptr), g_strfreev);
    QMap<QString, bool> result;
    for (gchar **key = keys.get(); key && *key; ++key) {
        const std::unique_ptr<gchar, decltype(&g_free)> text(
            g_key_file_get_value(file, group, *key, nullptr), g_free);
        const QString name = QString::fromUtf8(*key);
        const std::optional<bool> value = parseValue(QString::fromUtf8(text.get()).trimmed());
        if (!value)
            return badFile(path,
                           QStringLiteral("%1 in [%2] is neither true nor false")
                               .arg(cited(name), QString::fromUtf8(group)));
        result.insert(name, *value);
    }
    return result;
}

} // namespace

QString DesiredState::toText() const
{
    QString text;
    for (const QString &line : leftOut)
        text += QStringLiteral("# %1\n").arg(line);
    return text + groupText(PolicyGroup, KnownPolicies::keys(), policies)
        + groupText(SwitchGroup, switches.keys(), switches);
}

QJsonObject DesiredState::toJson() const
{
    return {{PolicyGroup, toObject(policies)},
            {SwitchGroup, toObject(switches)},
            {QStringLiteral("leftOut"), QJsonArray::fromStringList(leftOut)}};
}

Result<DesiredState> readDesiredState(const QString &path)
{
    const Result<QByteArray> content = contentOf(path);
    if (!content)
        return content.failure();
    const KeyFile file(g_key_file_new(), g_key_file_unref);
    GError *error = nullptr;
    if (!load(file, *content, &error)) {
        const QString message = QString::fromUtf8(error->message);
        g_error_free(error);
        return badFile(path, message);
    }
    if (const QByteArray key = repeatedKey(*content); !key.isEmpty())
        return badFile(path,
                       QStringLiteral("%1 has several values").arg(cited(QString::fromUtf8(key))));
    const Strings groups(g_key_file_get_groups(file.get(), nullptr), g_strfreev);
    DesiredState result;
    for (gchar **group = groups.get(); *group; ++group) {
        const QString name = QString::fromUtf8(*group);
        if (name != PolicyGroup && name != SwitchGroup)
            return badFile(
                path,
                QStringLiteral("there is a group %1 beside policy and switch").arg(cited(name)));
        const Result<QMap<QString, bool>> values = readGroup(file.get(), *group, path);
        if (!values)
            return values.failure();
        (name == PolicyGroup ? result.policies : result.switches) = *values;
    }
    return result;
}

DesiredState currentState(const Snapshot &snapshot)
{
    DesiredState result;
    for (const PolicyState &policy : snapshot.policies) {
        if (const std::optional<bool> value = exported(policy))
            result.policies.insert(policy.key, *value);
        else
            result.leftOut.append(
                QStringLiteral("%1 is left out: %2").arg(policy.key, policy.shortReason()));
    }
    for (const Daemon::Switch &governor : snapshot.switches) {
        if (canBeKey(governor.key))
            result.switches.insert(governor.key, governor.value);
        else
            result.leftOut.append(QStringLiteral("switch %1 is left out: a file cannot name it")
                                      .arg(quoted(governor.key)));
    }
    return result;
}
