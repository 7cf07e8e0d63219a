// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/holds.h"
#include "govctl/request.h"

namespace {

QString toText(const Hold &hold, const Output &output)
{
    QString text =
        QStringLiteral("%1  until %2\n")
            .arg(hold.id, hold.until.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    for (const Step &step : hold.steps)
        text += QStringLiteral("  %1 is %2, and will be %3 again\n")
                    .arg(step.name(), output.paint(step.value), output.paint(step.before));
    return text;
}

} // namespace

ExitCode Verbs::holds(const Request &, Output &output)
{
    QJsonArray array;
    QString text;
    const QVector<Hold> all = Holds::all();
    for (const Hold &hold : all) {
        array.append(hold.toJson());
        text += toText(hold, output);
    }
    return output.write(ExitCode::Done, {{QStringLiteral("holds"), array}}, text);
}
