// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <pellorapolicy/accessswitchplugin.h>

/// An access-switch plugin whose switches fail and govern the wrong policies.
class Plugin : public Pellora::AccessSwitchPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PELLORA_ACCESSSWITCHPLUGIN_IID)
    Q_INTERFACES(Pellora::AccessSwitchPlugin)

public:
    QVariant keyValue(const QString &key) override
    {
        return key == QLatin1String("a") ? QVariant(5) : QVariant(true);
    }
    int setKeyValue(const QString & /*key*/, const QVariant & /*value*/) override { return 0; }
    QHash<QString, QList<int>> keyPolicyTypes() const override
    {
        return {{QStringLiteral("%2"), {999}},
                {QStringLiteral("a"), {1}},
                {QStringLiteral("b"), {1, 0, 999}},
                {QStringLiteral("c"), {}}};
    }
};

#include "strangeswitches.moc"
