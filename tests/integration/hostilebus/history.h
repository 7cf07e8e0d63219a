// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_HOSTILEBUS_HISTORY_H
#define GOVD_TESTS_HOSTILEBUS_HISTORY_H

#include <QHash>
#include <QMap>
#include <QStringList>
#include <QVector>

/// The one order in which all changes happened, told by the audit events, and a model of what
/// everybody must have seen if the daemon did just that. Values are written as the workers of
/// govd-test-crowd print them.
class History
{
public:
    /// @p texts are all audit events, @p before the values of the policies before the first.
    History(const QStringList &texts, const QMap<QString, QString> &before);

    /// What does not fit together within the events themselves; empty when all does.
    QString problem() const { return m_problem; }

    /// The number of changes.
    int size() const { return m_changes.size(); }

    /// How often @p value was given to the policy @p key.
    int count(const QString &key, const QString &value) const;

    /// The values of the policies after the last change.
    QMap<QString, QString> values() const { return m_now; }

    /// All events and announcements in the order in which a listener gets them.
    QStringList announcements() const;

    /// What a client's account of its calls contradicts; empty when there is one place in the
    /// history for each of its calls, in its order.
    QString contradiction(const QStringList &account) const;

private:
    struct Change
    {
        QString text;
        QString key;
        QString oldValue;
        QString newValue;
    };

    /// The first place at or after @p since at which a reader of @p key gets @p value; -1 for none.
    int placeOfValue(const QString &key, const QString &value, int since) const;

    /// The place of the change of @p key to the number @p value; -1 for none.
    int placeOfChange(const QString &key, const QString &value) const;

    QVector<Change> m_changes;
    QHash<QString, QVector<int>> m_changesOfKey; ///< numbers of changes, from 1
    QMap<QString, QString> m_before;
    QMap<QString, QString> m_now;
    QString m_problem;
};

/// The value that an audit event shows as @p text, as a worker prints it.
QString valueFromEvent(const QString &text);

/// What the file holds, and the bus announces, for a value that a worker printed.
QString booleanReading(const QString &value);

#endif
