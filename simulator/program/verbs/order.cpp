// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/text.h"
#include "simulator/program/commandline.h"
#include "simulator/program/controlnames.h"
#include "simulator/program/remotedevice.h"

#include <QJsonArray>

#include <algorithm>

namespace Simulator {
namespace {

const QString Slow = QStringLiteral("slow");

/// How a verb becomes a call of the control object.
struct Row
{
    const char *verb;
    const char *method;
    QVariantList (*arguments)(const Request &request);
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
    {"unplug", "Unplug", firstArgument},
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

Outcome Verbs::order(const Request &request, Console &console)
{
    const Row &row = rowOf(request.verb->name);
    RemoteDevice device(request.timeout);
    const Result<QVariantList> answer =
        device.order(QLatin1String(row.method), row.arguments(request));
    if (!answer) {
        const bool isUnknown = answer.failure().code == ExitCode::Usage;
        return isUnknown ? withNearest(answer.failure(), request.arguments.value(0), device)
                         : answer.failure();
    }
    // What has a label of its own is told, because it may have been chosen for the person.
    const QString label = answer->value(0).toString();
    const QJsonObject result =
        label.isEmpty() ? QJsonObject() : QJsonObject{{QStringLiteral("label"), label}};
    console.write(result, label.isEmpty() ? QString() : label + QLatin1Char('\n'));
    return std::nullopt;
}

Outcome Verbs::checkFail(const QStringList &arguments)
{
    bool isNumber = false;
    const double seconds = arguments.value(2).toDouble(&isNumber);
    const QString fault = arguments.value(1);
    if (fault != Slow && arguments.size() > 2)
        return usageFailure(Text::tr("only slow takes seconds"));
    // Written so that it also refuses what is no number at all.
    if (fault == Slow && (!isNumber || !(seconds >= 0 && seconds <= ControlNames::LongestDelay)))
        return usageFailure(
            Text::tr("slow takes seconds, from 0 to %1, not %2")
                .arg(QString::number(ControlNames::LongestDelay), quoted(arguments.value(2))));
    return std::nullopt;
}

} // namespace Simulator
