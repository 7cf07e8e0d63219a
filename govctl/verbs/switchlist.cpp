// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "request.h"
#include "switches.h"
#include "text.h"

#include <QJsonArray>

#include <algorithm>

namespace {

ExitCode listKeys(const QStringList &keys, Output &output)
{
    QString text;
    for (const QString &key : keys)
        text += printable(key) + QLatin1Char('\n');
    return output.write(ExitCode::Done,
                        {{QStringLiteral("keys"), QJsonArray::fromStringList(keys)}}, text,
                        Output::Lines::Whole);
}

QString toLine(const Daemon::Switch &governor, const Output &output)
{
    const QStringList policies = governedPolicies(governor);
    return QStringLiteral("%1  %2  %3\n")
        .arg(quoted(governor.key), output.paint(governor.value),
             policies.isEmpty() ? QStringLiteral("governs nothing")
                                : policies.join(QStringLiteral(", ")));
}

} // namespace

ExitCode Verbs::switchList(const Request &request, Output &output)
{
    Daemon daemon(request.timeout);
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    const Result<Daemon::Reading> reading = daemon.read({});
    if (!reading)
        return output.fail(reading.failure());

    // The plugin's order is not defined; the output is sorted.
    QStringList keys = reading->switchKeys;
    std::sort(keys.begin(), keys.end());
    if (request.has(QStringLiteral("keys")))
        return listKeys(keys, output);

    const auto switches = daemon.readSwitches(keys);
    if (!switches)
        return output.fail(switches.failure());
    QJsonArray array;
    QString text;
    for (const Daemon::Switch &governor : *switches) {
        array.append(toJson(governor));
        text += toLine(governor, output);
    }
    return output.write(ExitCode::Done, {{QStringLiteral("switches"), array}}, text);
}
