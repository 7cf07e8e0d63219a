// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/lockplugin.h"

#include <QJsonArray>
#include <QLibraryInfo>

namespace Support {

LockPlugin::LockPlugin(const QString &file, const QString &name, const QStringList &supported)
    : TestPlugin(QStringLiteral("lockplugin.so"), directory() + file)
{
    setState({{QStringLiteral("name"), name},
              {QStringLiteral("supported"), QJsonArray::fromStringList(supported)}});
}

QString LockPlugin::directory()
{
    return QLibraryInfo::location(QLibraryInfo::LibrariesPath) + QLatin1String("/govd/");
}

void LockPlugin::setLocked(const QStringList &keys)
{
    QJsonObject changed = state();
    changed.insert(QStringLiteral("locked"), QJsonArray::fromStringList(keys));
    setState(changed);
}

void LockPlugin::announce(const QString &key, bool isLocked)
{
    order({{QStringLiteral("key"), key}, {QStringLiteral("locked"), isLocked}});
}

void LockPlugin::announceFromThread(const QString &key, bool isLocked)
{
    order({{QStringLiteral("key"), key},
           {QStringLiteral("locked"), isLocked},
           {QStringLiteral("thread"), true}});
}

void LockPlugin::endEventLoop(int code)
{
    order({{QStringLiteral("exit"), code}});
}

} // namespace Support
