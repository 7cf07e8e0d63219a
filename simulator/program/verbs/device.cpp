// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "busloss.h"
#include "commandline/text.h"
#include "simulator/program/bus.h"
#include "simulator/program/calllog.h"
#include "simulator/program/control.h"
#include "simulator/program/controlnames.h"
#include "simulator/program/verb.h"
#include "unixsignal.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>

#include <csignal>

namespace Simulator {
namespace {

Outcome checkBus(std::chrono::milliseconds timeout)
{
    if (const Outcome failure = Bus::connect(QDeadlineTimer(timeout), timeout))
        return failure;
    if (QDBusConnection::systemBus().interface()->isServiceRegistered(ControlNames::Service))
        return Failure{ExitCode::Refused,
                       QStringLiteral("refused"),
                       Text::tr("a device is on this bus already; end it first, or use that one"),
                       {}};
    return std::nullopt;
}

Failure nameTaken(const QString &name)
{
    return {ExitCode::Refused,
            QStringLiteral("refused"),
            Text::tr("the name %1 cannot be taken on the system bus: a real service has it, or "
                     "this user may not have it; use a bus without the first, as root")
                .arg(name),
            {}};
}

} // namespace

Outcome Verbs::device(const Request &request, Output &output)
{
    if (const Outcome failure = checkBus(request.timeout))
        return failure;

    Device device;
    Control control(device);
    if (const auto name = device.appear())
        return nameTaken(*name);
    if (!control.appear())
        return nameTaken(control.name());

    CallLog log(output);
    QObject::connect(&device, &Device::happened, &device, [&](const Happening &happening) {
        log.print(happening);
        if (!output.isOpen())
            QCoreApplication::quit();
    });
    const BusLoss bus;
    const UnixSignal interrupt(SIGINT);
    const UnixSignal termination(SIGTERM);
    QObject::connect(&bus, &BusLoss::lost, &QCoreApplication::quit);
    QObject::connect(&interrupt, &UnixSignal::caught, &QCoreApplication::quit);
    QObject::connect(&termination, &UnixSignal::caught, &QCoreApplication::quit);
    output.note(Text::tr("the device is on the bus"));
    QCoreApplication::exec();
    if (!QDBusConnection::systemBus().isConnected())
        return Bus::absence(Text::tr("the connection to the system bus was lost; check that dbus "
                                     "runs, and start the device again"));
    return std::nullopt;
}

} // namespace Simulator
