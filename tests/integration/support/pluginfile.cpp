// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/pluginfile.h"

#include "support/files.h"
#include "support/lockplugin.h"

#include <QFile>

namespace Support {

PluginFile::PluginFile(const QString &plugin, const QString &file)
    : PluginFile(plugin, file, -1)
{
}

PluginFile::PluginFile(const QString &plugin, const QString &file, int size)
    : m_path(LockPlugin::directory() + file)
{
    const QByteArray library =
        Files::read(QStringLiteral(GOVD_TEST_LOCKPLUGINS "/govd-test-%1.so").arg(plugin));
    if (library.isEmpty())
        qFatal("There is no built plugin %s", qPrintable(plugin));
    Files::write(m_path, size < 0 ? library : library.left(size));
}

PluginFile::~PluginFile()
{
    QFile::remove(m_path);
}

} // namespace Support
