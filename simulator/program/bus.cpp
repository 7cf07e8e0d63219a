// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/bus.h"

#include "commandline/systembus.h"
#include "commandline/text.h"

#include <QDBusConnection>

namespace Simulator {

Outcome Bus::connect(QDeadlineTimer deadline, std::chrono::milliseconds timeout)
{
    if (!SystemBus::connect(deadline))
        return silence(Text::tr("the system bus"), timeout);
    if (!QDBusConnection::systemBus().isConnected())
        return absence(Text::tr("cannot reach the system bus; check that dbus runs"));
    return std::nullopt;
}

Failure Bus::absence(const QString &what)
{
    return {ExitCode::NoDaemon, QStringLiteral("no-bus"), what, {}};
}

Failure Bus::silence(const QString &who, std::chrono::milliseconds timeout)
{
    return {ExitCode::NoAnswer,
            QStringLiteral("no-answer"),
            Text::tr("no answer within %1 s; check that %2 is not stopped, or wait longer with "
                     "--timeout")
                .arg(QString::number(static_cast<double>(timeout.count()) / 1000), who),
            {}};
}

} // namespace Simulator
