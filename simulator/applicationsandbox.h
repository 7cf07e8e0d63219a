// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_SIMULATOR_APPLICATIONSANDBOX_H
#define GOVD_SIMULATOR_APPLICATIONSANDBOX_H

#include "simulator/service.h"

#include <QSet>

namespace Simulator {

/// Keeps applications from being started: the application sandbox with its global denylist.
class ApplicationSandbox : public Service
{
    Q_OBJECT

public:
    ApplicationSandbox();

    /// The applications on the denylist, in alphabetical order.
    QStringList denylist() const;

private:
    Reply change(const QStringList &applications, bool isDenied);

    QSet<QString> m_denylist;
};

} // namespace Simulator

#endif
