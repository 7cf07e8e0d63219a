// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/daemonfailure.h"

#include "commandline/text.h"
#include "names.h"

#include <QDBusError>

Failure DaemonFailure::noBus(const QString &reason)
{
    return {ExitCode::NoDaemon,
            QStringLiteral("no-bus"),
            Text::tr("cannot reach the system bus (%1); check that dbus runs").arg(reason),
            {}};
}

Failure DaemonFailure::noService()
{
    return {ExitCode::NoDaemon,
            QStringLiteral("no-service"),
            Text::tr("%1 is not on the system bus; start the daemon, for example with: "
                     "systemctl start govd")
                .arg(Names::Service),
            {}};
}

Failure DaemonFailure::foreignOwner(uint user)
{
    return {ExitCode::NoDaemon,
            QStringLiteral("foreign-service"),
            Text::tr("%1 belongs to user %2, not to root, so nothing it says is believed; check "
                     "who may own the name in the bus policy")
                .arg(Names::Service, QString::number(user)),
            {}};
}

Failure DaemonFailure::badAnswer(const QString &what)
{
    return {ExitCode::NoDaemon,
            QStringLiteral("bad-answer"),
            Text::tr("%1 does not answer as the daemon does (%2); check what runs under the name")
                .arg(Names::Service, printable(what)),
            {}};
}

Failure DaemonFailure::noAnswer(double seconds)
{
    return {ExitCode::NoAnswer,
            QStringLiteral("no-answer"),
            Text::tr("no answer within %1 s; check that the daemon is not stuck, or wait longer "
                     "with --timeout")
                .arg(seconds),
            {}};
}

Failure DaemonFailure::fromError(const QDBusError &error)
{
    switch (error.type()) {
    case QDBusError::AccessDenied:
        return {ExitCode::NotAllowed,
                QStringLiteral("not-allowed"),
                Text::tr("this user may not do that (%1); \"govctl can\" says who may")
                    .arg(printable(error.message())),
                {}};
    // The bus says so of a caller whose partner has left. Waiting too long never ends here, because
    // the program's own deadline comes first.
    case QDBusError::NoReply:
    case QDBusError::ServiceUnknown:
        return noService();
    case QDBusError::Disconnected:
        return noBus(printable(error.message()));
    default:
        if (error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"))
            return noService();
        return badAnswer(error.name() + QStringLiteral(": ") + error.message());
    }
}
