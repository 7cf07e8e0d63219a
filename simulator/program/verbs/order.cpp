// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/text.h"
#include "commandline/usage.h"
#include "simulator/program/commandline.h"
#include "simulator/program/controlnames.h"
#include "simulator/program/remotedevice.h"

#include <QJsonArray>

#include <algorithm>
#include <iterator>

namespace Simulator {
namespace {

/// How a verb becomes a call of the control object.
struct Row
{
    const char *verb;
    const char *method;
    QVariantList (*arguments)(const Request &request);
    bool isForLabel = false; // whether its argument is the label of what is plugged in
};

QVariantList firstArgument(const Request &request)
{
    return {request.arguments.value(0)};
}

const Row Rows[] = {
    {"plug", "Plug",
     [](const Request &request) {
         return QVariantList{request.arguments[0], request.options.value(QStringLiteral("label"))};
     }},
    {"unplug", "Unplug", firstArgument, true},
    {"launch", "Launch", firstArgument},
    {"stop", "Stop", firstArgument},
    {"start", "Start", firstArgument},
    {"fail", "Fail",
     [](const Request &request) {
         return QVariantList{request.arguments[0], request.arguments[1],
                             request.arguments.value(2).toDouble()};
     }},
    {"heal", "Heal", firstArgument},
    {"certified", "SetCertified",
     [](const Request &request) {
         return QVariantList{request.arguments[0] == QLatin1String("yes")};
     }},
};

const Row &rowOf(const QString &verb)
{
    return *std::find_if(std::begin(Rows), std::end(Rows),
                         [&](const Row &row) { return verb == QLatin1String(row.verb); });
}

/// Labels are known to the device alone: it is asked for those that look like an unknown one.
Failure withNearest(Failure failure, const QString &name, RemoteDevice &device)
{
    const Result<QJsonObject> state = device.state();
    if (!state)
        return failure;
    QStringList labels;
    for (const QJsonValue &medium : state->value(QStringLiteral("storage")).toArray())
        labels.append(medium[QStringLiteral("label")].toString());
    failure.nearest = nearest(name, labels);
    return failure;
}

} // namespace

Outcome Verbs::order(const Request &request, Output &output)
{
    const Row &row = rowOf(request.verb->name);
    RemoteDevice device(request.timeout);
    const Result<QVariantList> answer =
        device.order(QLatin1String(row.method), row.arguments(request));
    if (!answer) {
        const bool isUnknownLabel = row.isForLabel && answer.failure().code == ExitCode::Usage;
        return isUnknownLabel ? withNearest(answer.failure(), request.arguments.value(0), device)
                              : answer.failure();
    }
    // What has a label of its own is told, because it may have been chosen for the person.
    const QString label = answer->value(0).toString();
    const QJsonObject result =
        label.isEmpty() ? QJsonObject() : QJsonObject{{QStringLiteral("label"), label}};
    output.write(ExitCode::Done, result, label.isEmpty() ? QString() : label + QLatin1Char('\n'));
    return std::nullopt;
}

Outcome Verbs::checkFail(const QStringList &arguments)
{
    if (arguments.value(1) != QLatin1String("slow")) {
        if (arguments.size() > 2)
            return usageFailure(Text::tr("only slow takes seconds"));
        return std::nullopt;
    }
    const Result<double> seconds =
        parseSeconds(QStringLiteral("slow"), arguments.value(2), 0, ControlNames::LongestDelay);
    if (!seconds)
        return seconds.failure();
    return std::nullopt;
}

} // namespace Simulator
