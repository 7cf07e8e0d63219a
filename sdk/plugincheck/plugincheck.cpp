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
    // The daemon binds functions when they are first called, and would end at a missing one. Here
    // all are bound at once, so that loading fails instead.
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

/// Reports that @p root derives from the class @p name without Q_INTERFACES; false if it does not
/// derive from it.
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

/// Whether @p root, which qobject_cast() accepts by the identifier alone, derives from the class.
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
