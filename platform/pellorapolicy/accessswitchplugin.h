// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef PELLORAPOLICY_ACCESSSWITCHPLUGIN_H
#define PELLORAPOLICY_ACCESSSWITCHPLUGIN_H

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

/// Identifier of the interface, by which the root object of an access-switch plugin is recognised.
#define PELLORA_ACCESSSWITCHPLUGIN_IID "org.kvt.brinos.AccessSwitchPlugin/1.0"

namespace Pellora {

/// The interface of an access-switch plugin, which holds the values of the device's access
/// switches.
///
/// An access switch is a device-wide on/off control that governs a list of policies: a switch that
/// is off forces them off. A plugin's root object derives from this class, lists it with
/// Q_INTERFACES(Pellora::AccessSwitchPlugin) and carries
/// Q_PLUGIN_METADATA(IID PELLORA_ACCESSSWITCHPLUGIN_IID). The process that loads the plugin owns
/// the root object; a plugin never deletes it. All calls come from that process's main thread and
/// must return at once, because it processes nothing else meanwhile.
class Q_DECL_EXPORT AccessSwitchPlugin : public QObject
{
    Q_OBJECT

public:
    explicit AccessSwitchPlugin(QObject *parent = nullptr);
    ~AccessSwitchPlugin() override;

    /// The value of the switch @p key as a bool, or a failure code of the plugin's own as an int. A
    /// switch whose value is no bool counts as off.
    virtual QVariant keyValue(const QString &key) = 0;

    /// Sets the switch @p key to @p value. Returns 0 when the plugin accepted the value, otherwise
    /// a failure code of its own. An accepted change is announced with keyValueChanged(), from
    /// within this call or later.
    virtual int setKeyValue(const QString &key, const QVariant &value) = 0;

    /// Every switch, by key, with the numbers (PolicyValue::PolicyType) of the policies it governs.
    virtual QHash<QString, QList<int>> keyPolicyTypes() const = 0;

Q_SIGNALS:
    /// The switch @p key now has @p value, whatever set it. Must not be emitted from within
    /// keyValue() or keyPolicyTypes(): the daemon can call these while it holds the mutex of its
    /// enforcer, which handling the signal would lock again: a deadlock.
    void keyValueChanged(const QString &key, const QVariant &value);
};

} // namespace Pellora

Q_DECLARE_INTERFACE(Pellora::AccessSwitchPlugin, PELLORA_ACCESSSWITCHPLUGIN_IID)

#endif
