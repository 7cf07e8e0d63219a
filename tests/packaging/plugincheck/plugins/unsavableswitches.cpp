// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <pellorapolicy/accessswitchplugin.h>

/// An access-switch plugin with keys that a key file cannot hold, and one that it can.
class Plugin : public Pellora::AccessSwitchPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PELLORA_ACCESSSWITCHPLUGIN_IID)
    Q_INTERFACES(Pellora::AccessSwitchPlugin)

public:
    QVariant keyValue(const QString & /*key*/) override { return true; }
    int setKeyValue(const QString & /*key*/, const QVariant & /*value*/) override { return 0; }
    QHash<QString, QList<int>> keyPolicyTypes() const override
    {
        return {{QStringLiteral("Encoding"), {1}},
                {QStringLiteral("a=b"), {2}},
                {QStringLiteral("two\nlines"), {3}},
                {QStringLiteral("with blanks, and more"), {4}}};
    }
};

#include "unsavableswitches.moc"
