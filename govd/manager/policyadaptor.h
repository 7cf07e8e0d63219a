// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_MANAGER_POLICYADAPTOR_H
#define GOVD_MANAGER_POLICYADAPTOR_H

#include <QDBusAbstractAdaptor>
#include <QDBusVariant>

class PolicyManager;

/// The bus interface org.kvt.PolicyManager.Policy: reads and writes policies.
///
/// Each method is one call of the manager. The manager is the adaptor's parent, so QtDBus gives it
/// the context of the bus call, by which it checks the caller. Reading needs no right, so the
/// number of lines logged meanwhile is limited. The order of members is fixed.
class PolicyAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kvt.PolicyManager.Policy")
    Q_CLASSINFO("D-Bus Introspection",
                "  <interface name=\"org.kvt.PolicyManager.Policy\">\n"
                "    <signal name=\"PolicyChanged\">\n"
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
                "      <arg type=\"b\" direction=\"out\"/>\n"
                "    </method>\n"
                "  </interface>\n")

public:
    explicit PolicyAdaptor(PolicyManager *manager);

Q_SIGNALS:
    /// A policy, a switch that governs it, or its lock changed; see PolicyManager::policyChanged().
    void PolicyChanged(const QString &key, const QDBusVariant &value);

public Q_SLOTS:
    /// The effective value of a policy. For a key without a value, no reply is sent.
    QDBusVariant KeyValue(const QString &key);

    /// Sets a policy. False when it is locked, or its value cannot be saved or sent in replies; the
    /// error AccessDenied for a caller without rights.
    bool SetKeyValue(const QString &key, const QDBusVariant &value);

private:
    PolicyManager *m_manager;
};

#endif
