// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "switchcheck.h"

#include "keyfile.h"
#include "namelist.h"
#include "names.h"
#include "policytypes.h"
#include "report.h"

#include <QFileInfo>

#include <pellorapolicy/accessswitchplugin.h>

#include <utility>

namespace {

/// Tries the key in an empty key file: the daemon saves switches in one, and refuses other keys.
void checkKey(const QString &key, Report &report)
{
    if (const KeyFileError error = KeyFile().setBoolean(Names::ConfigurationGroup, key, true))
        report.fail(QStringLiteral("keyPolicyTypes() lists a switch that can never be set: ")
                    + QString::fromUtf8(error->message));
}

/// Checks the policies that the switch @p key governs and returns their keys.
QStringList checkPolicies(const QString &key, const QList<int> &types, Report &report)
{
    QStringList names;
    for (const int type : types) {
        const QString name = typeToKey(static_cast<PolicyType>(type));
        if (type == PolicyTypes::None || name.isEmpty())
            report.warn(QStringLiteral("the switch \"%1\" governs number %2, which is no policy of "
                                       "this platform")
                            .arg(key, QString::number(type)));
        else
            names.append(name);
    }
    if (types.isEmpty())
        report.warn(QStringLiteral("the switch \"%1\" governs no policy").arg(key));
    return names;
}

void checkValue(const QString &key, const QVariant &value, Report &report)
{
    if (value.userType() == QMetaType::Bool)
        return;
    report.warn(
        QStringLiteral("keyValue(\"%1\") gives a %2 (%3) instead of a bool: for the daemon, "
                       "the switch has failed")
            .arg(key, QLatin1String(value.typeName()), value.toString()));
}

void checkOneSwitch(Pellora::AccessSwitchPlugin &plugin, const QString &key,
                    const QStringList &policies, Report &report)
{
    const QVariant value = plugin.keyValue(key);
    checkValue(key, value, report);
    report.note(QStringLiteral("the switch \"%1\" is %2 and governs: %3")
                    .arg(key, value.toBool() ? QStringLiteral("on") : QStringLiteral("off"),
                         enumerated(policies)));
}

} // namespace

void checkSwitches(Pellora::AccessSwitchPlugin &plugin, const QFileInfo &file, Report &report)
{
    report.note(QStringLiteral("an access-switch plugin"));
    if (file.fileName() != QFileInfo(Names::AccessSwitchPlugin).fileName())
        report.note(QStringLiteral("the daemon looks for it at ") + Names::AccessSwitchPlugin);

    bool isAnnounced = false;
    const auto watch = QObject::connect(&plugin, &Pellora::AccessSwitchPlugin::keyValueChanged,
                                        [&isAnnounced] { isAnnounced = true; });
    const QHash<QString, QList<int>> table = plugin.keyPolicyTypes();
    QStringList keys = table.keys();
    keys.sort();
    if (keys.isEmpty())
        report.warn(QStringLiteral("keyPolicyTypes() lists no switch"));
    QStringList governed;
    for (const QString &key : std::as_const(keys)) {
        checkKey(key, report);
        const QStringList policies = checkPolicies(key, table.value(key), report);
        checkOneSwitch(plugin, key, policies, report);
        governed.append(policies);
    }
    QObject::disconnect(watch);
    if (isAnnounced)
        report.fail(QStringLiteral("keyValue() or keyPolicyTypes() emits keyValueChanged(): the "
                                   "daemon would deadlock"));
    const QStringList twice = repeated(governed);
    if (!twice.isEmpty())
        report.warn(QStringLiteral("governed more than once, so that which switch is enforced is "
                                   "left to chance: ")
                    + enumerated(twice));
}
