// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "plugincondition.h"

#include "names.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

const QLatin1String Name("name");
const QLatin1String State("state");
const QLatin1String Message("message");

} // namespace

bool PluginCondition::isGood() const
{
    return state == QLatin1String("good") || state == QLatin1String("absent");
}

PluginConditions readPluginConditions()
{
    const QDir directory(Names::PluginConditionDirectory);
    if (directory.exists() && !directory.isReadable())
        return std::nullopt;
    QVector<PluginCondition> result;
    const QFileInfoList files =
        directory.entryInfoList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    for (const QFileInfo &info : files) {
        QFile file(info.filePath());
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        const QJsonObject shown = QJsonDocument::fromJson(file.readAll()).object();
        result.append({shown.value(Name).toString(), shown.value(State).toString(),
                       shown.value(Message).toString()});
    }
    return result;
}

QJsonValue toJson(const PluginConditions &conditions)
{
    if (!conditions)
        return QJsonValue::Null;
    QJsonArray result;
    for (const PluginCondition &condition : *conditions)
        result.append(QJsonObject{
            {Name, condition.name}, {State, condition.state}, {Message, condition.message}});
    return result;
}
