// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_RESTRICTION_SOURCERESTRICTION_H
#define GOVD_RESTRICTION_SOURCERESTRICTION_H

#include <QObject>
#include <QString>
#include <QStringList>

/// Interface identifier by which the root object of a plugin is recognised.
#define GOVD_SOURCERESTRICTION_IID "org.kvt.sourcerestriction"

/// A source of policy locks: what a lock plugin implements.
///
/// A locked policy reads as off and cannot be changed. A plugin's root object derives from this
/// class, lists it with Q_INTERFACES(SourceRestriction) and carries
/// Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID). The plugin is a shared library named "*.so"
/// in the directory "govd" below Qt's libraries; it resolves this class against the daemon, so it
/// links nothing of the daemon's. It is best built with -fvisibility=hidden or g++'s
/// -fno-gnu-unique, lest two plugins built from one source share their static data.
///
/// The daemon loads every plugin once, at its start, before it is on the bus, becomes the parent
/// of the root object, and deletes it when it ends. Calls come from the main thread only and must
/// return at once: the daemon answers nobody else meanwhile. Of two plugins of one name the daemon
/// heeds only the one that it loaded last; the other is deleted when the process ends, after the
/// application object. A plugin never deletes its root object itself.
class Q_DECL_EXPORT SourceRestriction : public QObject
{
    Q_OBJECT

public:
    SourceRestriction();
    ~SourceRestriction() override;

    /// The plugin's unique name.
    virtual QString name();

    /// Whether this source locks @p policy now. Asked for whenever a policy that
    /// supportedPolicies() lists is read or written, unless something else forbids it already;
    /// nothing is remembered. Must not emit policyIsLockedChanged(), which asks again.
    virtual bool policyIsLocked(const QString &policy);

    /// The keys of the policies that this source can lock. Asked for once, after name().
    virtual QStringList supportedPolicies();

Q_SIGNALS:
    /// The answer of policyIsLocked() for @p policy has changed to @p isLocked. May be emitted from
    /// any thread.
    void policyIsLockedChanged(const QString &policy, bool isLocked);
};

Q_DECLARE_INTERFACE(SourceRestriction, GOVD_SOURCERESTRICTION_IID)

#endif
