// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "metadata.h"

#include "report.h"
#include "sourcerestriction.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QPluginLoader>
#include <QVersionNumber>

#include <pellorapolicy/accessswitchplugin.h>

namespace {

/// Why Qt finds no meta data in the library.
QString reasonForNoMetaData(const QString &path, const QPluginLoader &loader)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot be read: ") + file.errorString();
    const QByteArray content = file.readAll();
    if (!content.startsWith("\177ELF"))
        return QStringLiteral("is no shared library");
    // Every version of moc puts this mark in front of the meta data.
    if (!content.contains("QTMETADATA "))
        return QStringLiteral("is no plugin: Q_PLUGIN_METADATA is missing or names no IID, or "
                              "the library was linked without the object file that has it");
    return QStringLiteral("is damaged: ") + loader.errorString();
}

QVersionNumber ownVersion()
{
    return QVersionNumber::fromString(QLatin1String(qVersion()));
}

/// Whether a plugin that was built with the Qt of @p version (as in QT_VERSION) works with this
/// one.
bool fits(int version)
{
    const QVersionNumber own = ownVersion();
    return version >> 16 == own.majorVersion() && (version >> 8 & 0xff) <= own.minorVersion();
}

QString versionText(int version)
{
    return QVersionNumber(version >> 16, version >> 8 & 0xff, version & 0xff).toString();
}

/// Only a warning: the daemon recognises plugins by their root object, not by the meta data.
void checkInterface(const QString &iid, Report &report)
{
    const QString lock = QStringLiteral(GOVD_SOURCERESTRICTION_IID);
    const QString accessSwitch =
        QLatin1String(qobject_interface_iid<Pellora::AccessSwitchPlugin *>());
    if (iid != lock && iid != accessSwitch)
        report.warn(QStringLiteral("Q_PLUGIN_METADATA names the interface \"%1\"; that of a lock "
                                   "plugin is \"%2\", that of an access-switch plugin \"%3\"")
                        .arg(iid, lock, accessSwitch));
}

} // namespace

bool checkMetaData(const QFileInfo &file, const QPluginLoader &loader, Report &report)
{
    if (!file.isFile()) {
        report.fail(file.exists() ? QStringLiteral("is no file")
                                  : QStringLiteral("does not exist"));
        return false;
    }
    const QJsonObject data = loader.metaData();
    if (data.isEmpty()) {
        report.fail(reasonForNoMetaData(file.filePath(), loader));
        return false;
    }
    const int version = data.value(QStringLiteral("version")).toInt();
    if (!fits(version)) {
        report.fail(QStringLiteral("was built with Qt %1, but the daemon runs on Qt %2")
                        .arg(versionText(version), ownVersion().toString()));
        return false;
    }
    checkInterface(data.value(QStringLiteral("IID")).toString(), report);
    return true;
}
