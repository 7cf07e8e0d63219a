// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "common/terminal.h"
#include "simulator/program/remotedevice.h"
#include "simulator/program/statusview.h"
#include "simulator/program/verb.h"

#include <QEventLoop>

namespace Simulator {
namespace {

void show(const QJsonObject &state, Console &console, bool isWatching)
{
    QString text = drawStatus(state, console);
    // A terminal shows one state at a time, as much of it as it has place for; a file one below the
    // other.
    if (isWatching && console.isTerminal())
        text = QStringLiteral("\033[H\033[2J") + Terminal::clipped(text, Terminal::size());
    console.write(state, text);
}

/// Shows each new state until the device or the reader goes.
Outcome watch(RemoteDevice &device, Console &console)
{
    QEventLoop loop;
    Outcome failure;
    QObject::connect(&device, &RemoteDevice::changed, &loop, [&](const QJsonObject &state) {
        show(state, console, true);
        if (!console.isOpen())
            loop.quit();
    });
    QObject::connect(&device, &RemoteDevice::lost, &loop, [&] {
        failure = device.absence();
        loop.quit();
    });
    loop.exec();
    return failure;
}

} // namespace

Outcome Verbs::status(const Request &request, Console &console)
{
    RemoteDevice device(request.timeout);
    const bool isWatching = request.has(QStringLiteral("watch"));
    if (isWatching)
        device.follow();
    const Result<QJsonObject> state = device.state();
    if (!state)
        return state.failure();
    show(*state, console, isWatching);
    return isWatching && console.isOpen() ? watch(device, console) : std::nullopt;
}

Outcome Verbs::services(const Request &request, Console &console)
{
    const Result<QJsonObject> state = RemoteDevice(request.timeout).state();
    if (!state)
        return state.failure();
    const QString key = QStringLiteral("services");
    console.write({{key, state->value(key)}}, drawServices(*state, console));
    return std::nullopt;
}

} // namespace Simulator
