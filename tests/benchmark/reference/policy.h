// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_POLICY_H
#define GOVD_BENCHMARK_REFERENCE_POLICY_H

#include "benchmark/reference/caller.h"
#include "serviceproxy.h"

#include <QDBusAbstractAdaptor>
#include <QDBusVariant>
#include <QHash>
#include <QStringList>

#include <string>

/// The policy interface with exactly the steps that the daemon must take for a read, for a write
/// and at start, in the daemon's order: the cost of the steps themselves with Qt.
class Policy : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kvt.PolicyManager.Policy")

public:
    /// Looks for plugins, loads @p file and enforces the values of @p keys, with a default for
    /// those that the file does not hold.
    Policy(Caller *caller, std::string file, const QStringList &keys);

public Q_SLOTS:
    QDBusVariant KeyValue(const QString &key);
    bool SetKeyValue(const QString &key, const QDBusVariant &value);

Q_SIGNALS:
    void PolicyChanged(const QString &key, const QDBusVariant &value);

private Q_SLOTS:
    void followName(const QString &name);

private:
    void followNames();
    void lookForPlugins();
    void load(const QStringList &keys);
    bool store(const QString &key, const QVariant &value);
    void recordChange(const QString &key, const QVariant &newValue, const QVariant &oldValue);

    Caller *m_caller;
    ServiceProxy m_systemLogs;
    std::string m_file;
    QHash<QString, QVariant> m_values;
};

#endif
