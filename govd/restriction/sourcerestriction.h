// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_RESTRICTION_SOURCERESTRICTION_H
#define GOVD_RESTRICTION_SOURCERESTRICTION_H

#include <QObject>
#include <QString>
#include <QStringList>

/// Identifier of the interface, by which the daemon recognises the root object of a lock plugin.
#define GOVD_SOURCERESTRICTION_IID "org.kvt.sourcerestriction"

/// The interface of a lock plugin, which locks policies.
///
/// A locked policy reads as off and cannot be changed. A plugin's root object derives from this
/// class, lists it with Q_INTERFACES(SourceRestriction) and carries
/// Q_PLUGIN_METADATA(IID GOVD_SOURCERESTRICTION_IID). The plugin is a shared library named "*.so"
/// in the directory "govd" below Qt's libraries. It resolves this class against the daemon's
/// executable and links no library of the daemon. Build it with -fvisibility=hidden or g++'s
/// -fno-gnu-unique; otherwise two plugins built from one source share their static data.
///
/// The daemon loads every plugin once, at its start, before it is on the bus. It becomes the parent
/// of the root object and deletes it when the daemon ends; a plugin never deletes its root object.
/// Of two plugins with one name the daemon uses only the one loaded last, and deletes the other
/// when the process ends, after the application object. All calls come from the main thread and
/// must return at once, because the daemon processes nothing else meanwhile.
class Q_DECL_EXPORT SourceRestriction : public QObject
{
    Q_OBJECT

public:
    SourceRestriction();
    ~SourceRestriction() override;

    /// The plugin's unique name. Called once, when the plugin has been loaded. Empty unless
    /// overridden.
    virtual QString name();

    /// Whether this plugin locks the policy with the key @p policy now. False unless overridden.
    ///
    /// Called for each read and write of a policy that supportedPolicies() lists, unless a switch
    /// or another plugin has decided before; the result is not cached. Must not emit
    /// policyIsLockedChanged(), which makes the daemon call this function again.
    virtual bool policyIsLocked(const QString &policy);

    /// The keys of the policies that this plugin can lock, as in Pellora::PolicyValue::PolicyType.
    /// Called once, after name(). Empty unless overridden.
    virtual QStringList supportedPolicies();

Q_SIGNALS:
    /// The result of policyIsLocked() for the key @p policy has changed to @p isLocked. May be
    /// emitted from any thread.
    void policyIsLockedChanged(const QString &policy, bool isLocked);
};

Q_DECLARE_INTERFACE(SourceRestriction, GOVD_SOURCERESTRICTION_IID)

#endif
