// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef PELLORAPOLICY_ACCESSSWITCHPLUGIN_H
#define PELLORAPOLICY_ACCESSSWITCHPLUGIN_H

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

/// Interface identifier by which the root object of a plugin is recognised.
#define PELLORA_ACCESSSWITCHPLUGIN_IID "org.kvt.brinos.AccessSwitchPlugin/1.0"

namespace Pellora {

/// Owns the values of the device's access switches.
///
/// An access switch is a device-wide on/off control that governs a list of policies: a switch that
/// is off forces them off. A plugin's root object derives from this class, lists it with
/// Q_INTERFACES(Pellora::AccessSwitchPlugin) and carries
/// Q_PLUGIN_METADATA(IID PELLORA_ACCESSSWITCHPLUGIN_IID). All calls come from the main thread of
/// the process that loaded the plugin; none of them may block for long, because that process
/// answers nobody else meanwhile. The process that loads the plugin owns the root object: a plugin
/// never deletes it itself.
class Q_DECL_EXPORT AccessSwitchPlugin : public QObject
{
    Q_OBJECT

public:
    explicit AccessSwitchPlugin(QObject *parent = nullptr);
    ~AccessSwitchPlugin() override;

    /// Returns the value of the switch @p key as a bool, or a failure code as an int.
    virtual QVariant keyValue(const QString &key) = 0;

    /// Sets the switch @p key to @p value. Returns 0 when the value was accepted, and any other
    /// number, chosen by the plugin, when it was not. An accepted change is announced with
    /// keyValueChanged(), from within this call or later.
    virtual int setKeyValue(const QString &key, const QVariant &value) = 0;

    /// Returns every switch with the numbers (PolicyValue::PolicyType) of the policies it governs.
    virtual QHash<QString, QList<int>> keyPolicyTypes() const = 0;

Q_SIGNALS:
    /// The switch @p key has taken @p value, by whatever route. Never emitted from within
    /// keyValue() or keyPolicyTypes(): those may be asked for while policies are being enforced,
    /// and enforcement waits for itself then.
    void keyValueChanged(const QString &key, const QVariant &value);
};

} // namespace Pellora

Q_DECLARE_INTERFACE(Pellora::AccessSwitchPlugin, PELLORA_ACCESSSWITCHPLUGIN_IID)

#endif
