// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "plugincheck.h"

#include "lockcheck.h"
#include "metadata.h"
#include "report.h"
#include "sourcerestriction.h"
#include "switchcheck.h"

#include <QFileInfo>
#include <QPluginLoader>

#include <pellorapolicy/accessswitchplugin.h>

namespace {

/// Loads the library and makes its root object; null, with the reason reported, when that fails.
QObject *load(QPluginLoader &loader, Report &report)
{
    // The daemon looks functions up when they are called, and would die of one that is missing.
    loader.setLoadHints(loader.loadHints() | QLibrary::ResolveAllSymbolsHint);
    if (!loader.load()) {
        report.fail(QStringLiteral("cannot be loaded: ") + loader.errorString());
        return nullptr;
    }
    QObject *root = loader.instance();
    if (!root)
        report.fail(QStringLiteral("has no root object: the plugin's class could not be made"));
    return root;
}

/// Says what @p root lacks to be a plugin of the class @p name, if that is what it is meant to be.
bool explainClass(const QObject &root, const char *name, Report &report)
{
    if (!root.inherits(name))
        return false;
    report.fail(QStringLiteral("the root object derives from %1 but does not say so with "
                               "Q_INTERFACES(%1)")
                    .arg(QLatin1String(name)));
    return true;
}

void explainRoot(const QObject &root, Report &report)
{
    if (explainClass(root, "SourceRestriction", report)
        || explainClass(root, "Pellora::AccessSwitchPlugin", report))
        return;
    report.fail(QStringLiteral("the root object is of the class %1, which is neither a "
                               "SourceRestriction nor a Pellora::AccessSwitchPlugin")
                    .arg(QLatin1String(root.metaObject()->className())));
}

/// The cast of the daemon goes by the identifier alone. Returns whether the class is right, too.
bool isOfClass(const QObject &root, const char *name, Report &report)
{
    if (root.inherits(name))
        return true;
    report.fail(QStringLiteral("the root object answers to the interface of %1 but does not derive "
                               "from it: the daemon would call functions that it does not have")
                    .arg(QLatin1String(name)));
    return false;
}

} // namespace

void checkPlugin(const QString &path, Report &report)
{
    const QFileInfo file(path);
    QPluginLoader loader(file.absoluteFilePath());
    if (!checkMetaData(file, loader, report))
        return;
    QObject *root = load(loader, report);
    if (!root)
        return;
    if (auto *lock = qobject_cast<SourceRestriction *>(root)) {
        if (isOfClass(*root, "SourceRestriction", report))
            checkLock(*lock, file, report);
    } else if (auto *switches = qobject_cast<Pellora::AccessSwitchPlugin *>(root)) {
        if (isOfClass(*root, "Pellora::AccessSwitchPlugin", report))
            checkSwitches(*switches, file, report);
    } else {
        explainRoot(*root, report);
    }
}
