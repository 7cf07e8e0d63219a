// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policyrestriction.h"

#include "names.h"
#include "sourcerestriction.h"

#include <QDir>
#include <QLibraryInfo>
#include <QPluginLoader>

#include <algorithm>
#include <utility>

PolicyRestriction::PolicyRestriction(QObject *parent)
    : QObject(parent)
    , sourceRestrictions(initSourceRestrictions())
    , policyToRestriction(initPolicyToRestriction())
{
    connectRestrictionChanged();
}

bool PolicyRestriction::checkPolicy(const QString &policy) const
{
    const QStringList names = policyToRestriction.value(policy);
    return std::none_of(names.begin(), names.end(), [&](const QString &name) {
        return sourceRestrictions.value(name)->policyIsLocked(policy);
    });
}

QHash<QString, SourceRestriction *> PolicyRestriction::initSourceRestrictions()
{
    QHash<QString, SourceRestriction *> sources;
    const QDir directory(QLibraryInfo::location(QLibraryInfo::LibrariesPath)
                         + Names::SourceRestrictionDirectory);
    const QStringList files =
        directory.entryList({QStringLiteral("*.so")}, QDir::Files, QDir::Unsorted);
    for (const QString &file : files) {
        // Of two plugins with one name, the one loaded later replaces the other.
        if (auto *source = loadPlugin(directory.absolutePath() + QDir::separator() + file))
            sources.insert(source->name(), source);
    }
    return sources;
}

SourceRestriction *PolicyRestriction::loadPlugin(const QString &path)
{
    QPluginLoader loader(path);
    QObject *instance = loader.instance();
    if (!instance) {
        qWarning("Cannot load plugin %s: %s", path.toLocal8Bit().constData(),
                 loader.errorString().toLocal8Bit().constData());
        return nullptr;
    }
    return qobject_cast<SourceRestriction *>(instance);
}

QHash<QString, QStringList> PolicyRestriction::initPolicyToRestriction()
{
    QHash<QString, QStringList> covered;
    for (auto source = sourceRestrictions.cbegin(); source != sourceRestrictions.cend(); ++source) {
        const QStringList keys = source.value()->supportedPolicies();
        for (const QString &key : keys)
            covered[key].append(source.key());
    }
    return covered;
}

void PolicyRestriction::connectRestrictionChanged()
{
    for (SourceRestriction *source : std::as_const(sourceRestrictions)) {
        source->setParent(this);
        connect(source, &SourceRestriction::policyIsLockedChanged, this,
                &PolicyRestriction::policyIsLockedChanged);
    }
}
