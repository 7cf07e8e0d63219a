// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <pellorapolicy/accessswitchplugin.h>

/// An access-switch plugin that announces a switch while it is asked about it.
class Plugin : public Pellora::AccessSwitchPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PELLORA_ACCESSSWITCHPLUGIN_IID)
    Q_INTERFACES(Pellora::AccessSwitchPlugin)

public:
    QVariant keyValue(const QString &key) override
    {
        Q_EMIT keyValueChanged(key, false);
        return false;
    }
    int setKeyValue(const QString & /*key*/, const QVariant & /*value*/) override { return 0; }
    QHash<QString, QList<int>> keyPolicyTypes() const override
    {
        return {{QStringLiteral("slider"), {1}}};
    }
};

#include "chattyswitch.moc"
