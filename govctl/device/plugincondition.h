// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVCTL_PLUGINCONDITION_H
#define GOVCTL_PLUGINCONDITION_H

#include <QJsonArray>
#include <QString>
#include <QVector>

#include <optional>

/// The state of a plugin's own file, as the plugin reports it.
struct PluginCondition
{
    QString name; ///< of the plugin
    QString state; ///< "good", "absent", "kept" or "never-good"
    QString message; ///< the same for people

    /// Whether the plugin uses its file as it is now.
    bool isGood() const;
};

using PluginConditions = std::optional<QVector<PluginCondition>>;

/// The reports of the running daemon's plugins, sorted by name; empty when this user may not read
/// them.
PluginConditions readPluginConditions();

/// The reports as JSON; null when they cannot be read.
QJsonValue toJson(const PluginConditions &conditions);

#endif
