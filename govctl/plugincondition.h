// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLUGINCONDITION_H
#define GOVCTL_PLUGINCONDITION_H

#include <QJsonArray>
#include <QString>
#include <QVector>

#include <optional>

/// What a plugin with a file of its own tells of that file.
struct PluginCondition
{
    QString name; ///< of the plugin
    QString state; ///< "good", "absent", "kept" or "never-good"
    QString message; ///< the same for people

    /// Whether the plugin goes by its file as it is.
    bool isGood() const;
};

using PluginConditions = std::optional<QVector<PluginCondition>>;

/// What the plugins of the running daemon tell, in the order of their names; nothing when this user
/// may not read it.
PluginConditions readPluginConditions();

/// For programs; null when nothing is known.
QJsonValue toJson(const PluginConditions &conditions);

#endif
