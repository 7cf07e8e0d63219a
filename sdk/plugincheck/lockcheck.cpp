// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "lockcheck.h"

#include "namelist.h"
#include "policytypes.h"
#include "report.h"
#include "sourcerestriction.h"

#include <QFileInfo>

namespace {

void checkName(const QString &name, const QFileInfo &file, Report &report)
{
    if (!file.fileName().endsWith(QLatin1String(".so"), Qt::CaseInsensitive))
        report.warn(QStringLiteral("the daemon looks at files only whose names end in \".so\""));
    if (name.isEmpty())
        report.warn(QStringLiteral("name() is empty: of two plugins of one name, the nameless "
                                   "included, the daemon uses only one"));
}

void checkPolicies(const QStringList &policies, Report &report)
{
    if (policies.isEmpty())
        report.warn(QStringLiteral("supportedPolicies() lists no policy: it will lock none"));
    for (const QString &policy : policies) {
        if (keyToType(policy) == PolicyTypes::None)
            report.warn(QStringLiteral("supportedPolicies() lists \"%1\", which is no policy of "
                                       "this platform")
                            .arg(policy));
    }
    const QStringList twice = repeated(policies);
    if (!twice.isEmpty())
        report.note(QStringLiteral("supportedPolicies() lists more than once: ")
                    + enumerated(twice));
}

} // namespace

void checkLock(SourceRestriction &plugin, const QFileInfo &file, Report &report)
{
    const QString name = plugin.name();
    checkName(name, file, report);
    const QStringList policies = plugin.supportedPolicies();
    checkPolicies(policies, report);

    bool isAnnounced = false;
    const auto watch = QObject::connect(&plugin, &SourceRestriction::policyIsLockedChanged,
                                        [&isAnnounced] { isAnnounced = true; });
    QStringList locked;
    for (const QString &policy : policies) {
        if (plugin.policyIsLocked(policy) && !locked.contains(policy))
            locked.append(policy);
    }
    QObject::disconnect(watch);
    if (isAnnounced)
        report.fail(QStringLiteral("policyIsLocked() emits policyIsLockedChanged(): the daemon "
                                   "would ask again, without end"));
    report.note(QStringLiteral("a lock plugin named \"%1\"").arg(name));
    report.note(QStringLiteral("can lock: %1").arg(enumerated(policies)));
    report.note(QStringLiteral("locks now: %1").arg(enumerated(locked)));
}
