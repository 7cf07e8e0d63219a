// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_BENCHMARK_REFERENCE_BARE_STORE_H
#define GOVD_BENCHMARK_REFERENCE_BARE_STORE_H

#include <QDBusAbstractAdaptor>
#include <QDBusVariant>
#include <QHash>

/// The policy interface over a hash and nothing else: what Qt's bus library alone costs.
class Store : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kvt.PolicyManager.Policy")

public:
    explicit Store(QObject *object)
        : QDBusAbstractAdaptor(object)
    {
    }

public Q_SLOTS:
    /// The stored value; true for a key that was never stored.
    QDBusVariant KeyValue(const QString &key) { return QDBusVariant(m_values.value(key, true)); }

    /// Stores a value, for any caller.
    bool SetKeyValue(const QString &key, const QDBusVariant &value)
    {
        m_values.insert(key, value.variant());
        return true;
    }

private:
    QHash<QString, QVariant> m_values;
};

#endif
