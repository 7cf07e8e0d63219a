// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_RESTRICTION_POLICYRESTRICTION_H
#define GOVD_RESTRICTION_POLICYRESTRICTION_H

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

class SourceRestriction;

/// Tells which policies are locked, by asking the lock plugins.
///
/// Plugins are loaded at construction and never again. Main thread only.
class PolicyRestriction : public QObject
{
    Q_OBJECT

public:
    explicit PolicyRestriction(QObject *parent);

    /// False when a plugin that lists @p policy locks it now, otherwise true.
    bool checkPolicy(const QString &policy) const;

Q_SIGNALS:
    /// A plugin has announced a change. Passed on unchecked: another plugin may still lock the
    /// policy, or the lock may not have changed.
    void policyIsLockedChanged(const QString &policy, bool isLocked);

private:
    QHash<QString, SourceRestriction *> initSourceRestrictions();
    SourceRestriction *loadPlugin(const QString &path);
    QHash<QString, QStringList> initPolicyToRestriction();
    void connectRestrictionChanged();

    QHash<QString, SourceRestriction *> sourceRestrictions;
    QHash<QString, QStringList> policyToRestriction;
};

#endif
