// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/applicationsandbox.h"

namespace Simulator {

ApplicationSandbox::ApplicationSandbox()
    : Service(QStringLiteral("org.pelloraos.appjaild1"))
{
    const auto add = [this](const Call &call) {
        return change(call.arguments.at(0).toStringList(), true);
    };
    const auto remove = [this](const Call &call) {
        return change(call.arguments.at(0).toStringList(), false);
    };
    objects().add(QStringLiteral("/org/pelloraos/appjaild1"),
                  {name(),
                   {{QStringLiteral("AddToGlobalDenylist"), QStringLiteral("as"), {}, add},
                    {QStringLiteral("RemoveFromGlobalDenylist"), QStringLiteral("as"), {}, remove}},
                   {},
                   {}});
}

QStringList ApplicationSandbox::denylist() const
{
    QStringList applications = m_denylist.values();
    applications.sort();
    return applications;
}

Reply ApplicationSandbox::change(const QStringList &applications, bool isDenied)
{
    if (applications.contains(QString()))
        return Reply::invalidArguments(QStringLiteral("An application has an identifier"));
    const QSet<QString> before = m_denylist;
    const QSet<QString> named(applications.begin(), applications.end());
    if (isDenied)
        m_denylist.unite(named);
    else
        m_denylist.subtract(named);
    if (m_denylist != before)
        Q_EMIT changed();
    return {};
}

} // namespace Simulator
