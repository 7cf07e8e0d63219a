// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <pellorapolicy/accessswitchplugin.h>

/// A plugin with other metadata, but with an access-switch plugin as its root object.
class Mislabelled : public Pellora::AccessSwitchPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.govd.test.Mislabelled")
    Q_INTERFACES(Pellora::AccessSwitchPlugin)

public:
    QVariant keyValue(const QString & /*key*/) override { return true; }
    int setKeyValue(const QString & /*key*/, const QVariant & /*value*/) override { return 0; }
    QHash<QString, QList<int>> keyPolicyTypes() const override
    {
        return {{QStringLiteral("mislabelled"), {1}}};
    }
};

#include "mislabelled.moc"
