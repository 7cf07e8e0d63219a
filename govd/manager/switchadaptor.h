// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_SWITCHADAPTOR_H
#define GOVD_MANAGER_SWITCHADAPTOR_H

#include <QDBusAbstractAdaptor>
#include <QDBusVariant>
#include <QList>
#include <QStringList>

class PolicyManager;

/// The bus interface org.kvt.PolicyManager.Switch: reads and writes access switches and tells which
/// policies each governs. Built like PolicyAdaptor.
///
/// The introspection text declares the result of SetKeyValue as "i", but the reply is a boolean.
/// Both are fixed: the text is served as it stands, and the reply follows the slot's type.
class SwitchAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kvt.PolicyManager.Switch")
    Q_CLASSINFO("D-Bus Introspection",
                "  <interface name=\"org.kvt.PolicyManager.Switch\">\n"
                "    <signal name=\"SwitchChanged\">\n"
                "      <arg name=\"key\" type=\"s\" direction=\"out\"/>\n"
                "      <arg name=\"value\" type=\"v\" direction=\"out\"/>\n"
                "    </signal>\n"
                "    <method name=\"KeyValue\">\n"
                "      <arg name=\"key\" type=\"s\" direction=\"in\"/>\n"
                "      <arg type=\"v\" direction=\"out\"/>\n"
                "    </method>\n"
                "    <method name=\"SetKeyValue\">\n"
                "      <arg name=\"key\" type=\"s\" direction=\"in\"/>\n"
                "      <arg name=\"value\" type=\"v\" direction=\"in\"/>\n"
                "      <arg type=\"i\" direction=\"out\"/>\n"
                "    </method>\n"
                "    <method name=\"KeyPolicyTypes\">\n"
                "      <arg name=\"key\" type=\"s\" direction=\"in\"/>\n"
                "      <arg type=\"ai\" direction=\"out\"/>\n"
                "    </method>\n"
                "    <method name=\"Keys\">\n"
                "      <arg type=\"as\" direction=\"out\"/>\n"
                "    </method>\n"
                "  </interface>\n")

public:
    explicit SwitchAdaptor(PolicyManager *manager);

Q_SIGNALS:
    /// The access-switch plugin reported a new value.
    void SwitchChanged(const QString &key, const QDBusVariant &value);

public Q_SLOTS:
    /// The value of a switch; false for one that cannot be read, and without a plugin.
    QDBusVariant KeyValue(const QString &key);

    /// Sets a switch. False without a plugin, when it refuses, and when the value cannot be saved
    /// or sent in replies; the error AccessDenied for a caller without rights.
    bool SetKeyValue(const QString &key, const QDBusVariant &value);

    /// The numbers of the policies that a switch governs; empty for an unknown switch.
    QList<int> KeyPolicyTypes(const QString &key);

    /// All switches.
    QStringList Keys();

private:
    PolicyManager *m_manager;
};

#endif
