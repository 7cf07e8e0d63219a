// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/switchplugin.h"

#include <QJsonArray>
#include <QJsonObject>

namespace Support {

SwitchPlugin::SwitchPlugin()
    : TestPlugin(QStringLiteral("switchplugin.so"), location())
{
}

QString SwitchPlugin::location()
{
    return QStringLiteral("/usr/lib64/libpellorapolicy/plugin/libpelloraswitchplugin.so");
}

void SwitchPlugin::setSwitch(const QString &key, const QList<int> &types, const QJsonValue &value)
{
    QJsonArray numbers;
    for (const int type : types)
        numbers.append(type);
    setEntry(key, QStringLiteral("types"), numbers);
    setEntry(key, QStringLiteral("value"), value);
}

void SwitchPlugin::setEntry(const QString &key, const QString &entry, const QJsonValue &value)
{
    QJsonObject changed = state();
    QJsonObject switches = changed.value(QLatin1String("switches")).toObject();
    QJsonObject one = switches.value(key).toObject();
    one.insert(entry, value);
    switches.insert(key, one);
    changed.insert(QStringLiteral("switches"), switches);
    setState(changed);
}

QJsonValue SwitchPlugin::value(const QString &key) const
{
    const QJsonObject switches = state().value(QLatin1String("switches")).toObject();
    return switches.value(key).toObject().value(QLatin1String("value"));
}

void SwitchPlugin::hold(const QString &operation)
{
    QJsonObject changed = state();
    changed.insert(QStringLiteral("hold"), QJsonArray{operation});
    setState(changed);
}

void SwitchPlugin::release()
{
    QJsonObject changed = state();
    changed.remove(QStringLiteral("hold"));
    setState(changed);
}

void SwitchPlugin::announce(const QString &key, const QJsonValue &value)
{
    order({{QStringLiteral("key"), key}, {QStringLiteral("value"), value}});
}

} // namespace Support
