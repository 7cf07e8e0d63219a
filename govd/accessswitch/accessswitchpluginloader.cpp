// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "accessswitchpluginloader.h"

#include "names.h"

#include <QDebug>
#include <QFile>
#include <QPluginLoader>

#include <memory>

namespace Pellora {

AccessSwitchPluginLoader *AccessSwitchPluginLoader::instance()
{
    // Never destroyed, so that the plugin can be used until the process ends.
    static auto *const loader = new AccessSwitchPluginLoader;
    return loader;
}

AccessSwitchPluginLoader::AccessSwitchPluginLoader()
{
    if (!QFile::exists(Names::AccessSwitchPlugin))
        return;

    auto library = std::make_unique<QPluginLoader>(Names::AccessSwitchPlugin);
    if (!library->load()) {
        qWarning() << "Failed to load plugin" << Names::AccessSwitchPlugin
                   << library->errorString();
    }
    m_plugin = qobject_cast<AccessSwitchPlugin *>(library->instance());
    if (m_plugin)
        (void)library.release(); // keeps the library loaded as long as the process lives
    else
        library->unload();
}

AccessSwitchPluginLoader::~AccessSwitchPluginLoader()
{
    delete m_plugin;
}

AccessSwitchPlugin *AccessSwitchPluginLoader::plugin()
{
    return m_plugin;
}

} // namespace Pellora
