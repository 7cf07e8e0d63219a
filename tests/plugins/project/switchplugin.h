// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef SWITCHPLUGIN_H
#define SWITCHPLUGIN_H

#include "control.h"

#include <pellorapolicy/accessswitchplugin.h>

/// An access-switch plugin that a test controls.
class SwitchPlugin : public Pellora::AccessSwitchPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PELLORA_ACCESSSWITCHPLUGIN_IID)
    Q_INTERFACES(Pellora::AccessSwitchPlugin)

public:
    SwitchPlugin();

    QVariant keyValue(const QString &key) override;
    int setKeyValue(const QString &key, const QVariant &value) override;
    QHash<QString, QList<int>> keyPolicyTypes() const override;

private:
    QJsonObject begin(const QString &operation, const QString &arguments) const;
    void keep(const QString &key, const QVariant &value);
    void announce(const QString &when, const QString &key, const QVariant &value);

    mutable Control m_control;
};

#endif
