// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "daemonfailure.h"

#include "names.h"
#include "text.h"

#include <QDBusError>

Failure DaemonFailure::noBus(const QString &reason)
{
    return {ExitCode::NoDaemon,
            QStringLiteral("no-bus"),
            QStringLiteral("cannot reach the system bus (%1); check that dbus runs").arg(reason),
            {}};
}

Failure DaemonFailure::noService()
{
    return {ExitCode::NoDaemon,
            QStringLiteral("no-service"),
            QStringLiteral("%1 is not on the system bus; start the daemon, for example with: "
                           "systemctl start govd")
                .arg(Names::Service),
            {}};
}

Failure DaemonFailure::foreignOwner(uint user)
{
    return {
        ExitCode::NoDaemon,
        QStringLiteral("foreign-service"),
        QStringLiteral("%1 belongs to user %2, not to root, so nothing it says is believed; check "
                       "who may own the name in the bus policy")
            .arg(Names::Service, QString::number(user)),
        {}};
}

Failure DaemonFailure::badAnswer(const QString &what)
{
    return {
        ExitCode::NoDaemon,
        QStringLiteral("bad-answer"),
        QStringLiteral("%1 does not answer as the daemon does (%2); check what runs under the name")
            .arg(Names::Service, printable(what)),
        {}};
}

Failure DaemonFailure::noAnswer(double seconds)
{
    return {
        ExitCode::NoAnswer,
        QStringLiteral("no-answer"),
        QStringLiteral("no answer within %1 s; check that the daemon is not stuck, or wait longer "
                       "with --timeout")
            .arg(seconds),
        {}};
}

Failure DaemonFailure::notAllowed()
{
    return {ExitCode::NotAllowed,
            QStringLiteral("not-allowed"),
            QStringLiteral("this user may not change anything; \"govctl can\" says who may"),
            {}};
}

Failure DaemonFailure::busRefuses()
{
    return {
        ExitCode::NotAllowed,
        QStringLiteral("not-allowed"),
        QStringLiteral("the system bus does not let this process change anything; \"govctl can\" "
                       "says who may"),
        {}};
}

Failure DaemonFailure::fromError(const QDBusError &error, bool ofBus)
{
    switch (error.type()) {
    case QDBusError::AccessDenied:
        return ofBus ? busRefuses() : notAllowed();
    // The bus sends NoReply when the called connection has closed. It cannot be a time-out here:
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
