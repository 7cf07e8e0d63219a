// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/text.h"
#include "commandline/usage.h"
#include "simulator/program/commandline.h"
#include "simulator/program/facts.h"
#include "simulator/program/remotedevice.h"

#include <QEventLoop>
#include <QTimer>

namespace Simulator {
namespace {

/// What is expected: a fact and its value.
struct Expectation
{
    explicit Expectation(const QStringList &arguments)
        : key(QStringList(arguments.mid(0, arguments.size() - 1)).join(QLatin1Char(' ')))
        , value(arguments.last())
    {
    }

    QString key;
    QString value;
};

/// Waits until the device is as it should be. What it was last, or why nothing is known.
Result<QString> waitFor(const Expectation &expected, RemoteDevice &device)
{
    device.follow();
    const Result<QJsonObject> state = device.state();
    if (!state)
        return state.failure();
    QString found = valueOf(factsOf(*state), expected.key);

    QEventLoop loop;
    Outcome failure;
    QObject::connect(&device, &RemoteDevice::changed, &loop, [&](const QJsonObject &now) {
        found = valueOf(factsOf(now), expected.key);
        if (found == expected.value)
            loop.quit();
    });
    QObject::connect(&device, &RemoteDevice::lost, &loop, [&] {
        failure = device.absence();
        loop.quit();
    });
    if (found != expected.value) {
        QTimer::singleShot(device.deadline().remainingTime(), &loop, &QEventLoop::quit);
        loop.exec();
    }
    if (failure)
        return *failure;
    return found;
}

} // namespace

Outcome Verbs::expect(const Request &request, Output &output)
{
    const Expectation expected(request.arguments);
    RemoteDevice device(request.timeout);
    const Result<QString> found = waitFor(expected, device);
    if (!found)
        return found.failure();
    if (*found != expected.value) {
        const double seconds = static_cast<double>(request.timeout.count()) / 1000;
        return Failure{
            ExitCode::No,
            QStringLiteral("unexpected"),
            Text::tr("%1 is %2, not %3, after %4 s")
                .arg(printable(expected.key), *found, expected.value, QString::number(seconds)),
            {}};
    }
    output.write(ExitCode::Done,
                 {{QStringLiteral("what"), expected.key}, {QStringLiteral("value"), *found}},
                 QString());
    return std::nullopt;
}

Outcome Verbs::checkExpect(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return std::nullopt;
    const FactRow &row = *findFactRow(arguments.first());
    const int count = row.name.isEmpty() ? 2 : 3;
    const QString values =
        row.values.isEmpty() ? Text::tr("NUMBER") : row.values.join(QLatin1Char('|'));
    const QStringList form{QStringLiteral("expect"), row.word, row.name, values};
    if (const Outcome failure =
            checkCount(arguments.size(), count, count, form.join(QLatin1Char(' ')).simplified()))
        return failure;
    if (!row.names.isEmpty() && !row.names.contains(arguments[1]))
        return unknownName(row.name, arguments[1], row.names);
    if (!row.values.isEmpty() && !row.values.contains(arguments.last()))
        return unknownName(Text::tr("value"), arguments.last(), row.values);
    bool isNumber = false;
    arguments.last().toUInt(&isNumber);
    if (row.values.isEmpty() && !isNumber)
        return usageFailure(
            Text::tr("%1 is a number, not %2").arg(row.word, quoted(arguments.last())));
    return std::nullopt;
}

} // namespace Simulator
