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

    /// True when @p policy is free, false when a plugin that covers it locks it now.
    bool checkPolicy(const QString &policy) const;

Q_SIGNALS:
    /// A plugin has announced a change, passed on as it came: the policy can still be locked by
    /// another plugin, or not have changed at all.
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
