// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/terminal.h"
#include "simulator/program/remotedevice.h"
#include "simulator/program/statusview.h"
#include "simulator/program/verb.h"

#include <QEventLoop>

namespace Simulator {
namespace {

void show(const QJsonObject &state, Output &output, bool isWatching)
{
    QString text = drawStatus(state, output);
    // A terminal shows one state at a time, as much of it as it has place for; a file one below the
    // other.
    if (isWatching && !output.isJson() && Terminal::canBeSteered())
        text = QStringLiteral("\033[H\033[2J") + Terminal::clipped(text, Terminal::size());
    output.write(ExitCode::Done, state, text);
}

/// Shows each new state until the device or the reader goes.
Outcome watch(RemoteDevice &device, Output &output)
{
    QEventLoop loop;
    Outcome failure;
    QObject::connect(&device, &RemoteDevice::changed, &loop, [&](const QJsonObject &state) {
        show(state, output, true);
        if (!output.isOpen())
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

Outcome Verbs::status(const Request &request, Output &output)
{
    RemoteDevice device(request.timeout);
    const bool isWatching = request.has(QStringLiteral("watch"));
    if (isWatching)
        device.follow();
    const Result<QJsonObject> state = device.state();
    if (!state)
        return state.failure();
    show(*state, output, isWatching);
    return isWatching && output.isOpen() ? watch(device, output) : std::nullopt;
}

Outcome Verbs::services(const Request &request, Output &output)
{
    const Result<QJsonObject> state = RemoteDevice(request.timeout).state();
    if (!state)
        return state.failure();
    const QString key = QStringLiteral("services");
    output.write(ExitCode::Done, {{key, state->value(key)}}, drawServices(*state, output));
    return std::nullopt;
}

} // namespace Simulator
