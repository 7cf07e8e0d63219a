// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "holds.h"
#include "request.h"

namespace {

QString toText(const Hold &hold, const Output &output)
{
    QString text =
        QStringLiteral("%1  until %2\n")
            .arg(hold.id, hold.until.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    for (const Step &step : hold.steps)
        text += QStringLiteral("  %1 was set to %2, and will be %3 again unless it is changed\n")
                    .arg(step.name(), output.paint(step.value), output.paint(step.before));
    return text;
}

} // namespace

ExitCode Verbs::holds(const Request &, Output &output)
{
    QJsonArray array;
    QString text;
    const Holds::Listing all = Holds::all();
    for (const Hold &hold : all.holds) {
        array.append(hold.toJson());
        text += toText(hold, output);
    }
    const QJsonObject result{{QStringLiteral("holds"), array}};
    if (all.failure)
        return output.fail(*all.failure, result, text);
    return output.write(ExitCode::Done, result, text);
}
