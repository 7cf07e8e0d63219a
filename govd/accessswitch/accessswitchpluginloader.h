// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_ACCESSSWITCH_ACCESSSWITCHPLUGINLOADER_H
#define GOVD_ACCESSSWITCH_ACCESSSWITCHPLUGINLOADER_H

#include <QObject>

#include <pellorapolicy/accessswitchplugin.h>

namespace Pellora {

/// Finds and loads the platform's one access-switch plugin.
///
/// The plugin is loaded once, by the first call of instance(); one that is installed later is
/// loaded at the daemon's next start. Main thread only.
class AccessSwitchPluginLoader : public QObject
{
    Q_OBJECT

public:
    /// The one loader. It is built by the first call and lives until the process ends.
    static AccessSwitchPluginLoader *instance();

    ~AccessSwitchPluginLoader() override;

    /// The plugin, owned by the loader; null when there is none or it could not be loaded.
    AccessSwitchPlugin *plugin();

private:
    AccessSwitchPluginLoader();

    AccessSwitchPlugin *m_plugin = nullptr;
};

} // namespace Pellora

#endif
