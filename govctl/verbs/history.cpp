// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/history.h"
#include "govctl/request.h"
#include "govctl/switches.h"
#include "govctl/text.h"

#include <algorithm>

namespace {

QString resultText(const RecordedWrite &write, const Output &output)
{
    const auto style = write.isAccepted() ? Output::Style::Good : Output::Style::Bad;
    QString text = output.paint(style, printable(write.result));
    if (write.leftOut)
        text += QStringLiteral("; %1 before it have no record").arg(write.leftOut);
    return text;
}

QString toText(const QVector<RecordedWrite> &writes, const Output &output)
{
    if (writes.isEmpty())
        return QStringLiteral("the journal has no such record\n");
    QVector<QStringList> rows;
    QVector<int> widths(5, 0);
    for (const RecordedWrite &write : writes) {
        rows.append({write.when(), write.user(), write.programText(), write.name(),
                     write.changeText(), resultText(write, output)});
        for (int i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], rows.last()[i].size());
    }
    QString text;
    for (QStringList &row : rows) {
        for (int i = 0; i < widths.size(); ++i)
            row[i] = row[i].leftJustified(widths[i]);
        text += row.join(QStringLiteral("  ")) + QLatin1Char('\n');
    }
    return text;
}

/// Those of @p patterns that match no record. A record can name what is no policy or switch.
QStringList unrecorded(const QStringList &patterns, const QVector<RecordedWrite> &writes)
{
    QStringList result;
    for (const QString &pattern : patterns) {
        if (std::none_of(writes.begin(), writes.end(), [&pattern](const RecordedWrite &write) {
                return matchesAny({pattern}, write.key);
            }))
            result.append(pattern);
    }
    return result;
}

} // namespace

ExitCode Verbs::history(const Request &request, Output &output)
{
    const QString result =
        request.has(QStringLiteral("denied")) ? QStringLiteral("denied") : QString();
    const Result<QVector<RecordedWrite>> all =
        History::read(result, request.options.value(QStringLiteral("since")), request.timeout);
    if (!all)
        return output.fail(all.failure());
    if (const Outcome failure = checkNames(unrecorded(request.arguments, *all), request.timeout))
        return output.fail(*failure);
    QVector<RecordedWrite> writes;
    QJsonArray array;
    for (const RecordedWrite &write : *all) {
        if (request.arguments.isEmpty() || matchesAny(request.arguments, write.key)) {
            writes.append(write);
            array.append(write.toJson());
        }
    }
    return output.write(ExitCode::Done, {{QStringLiteral("writes"), array}},
                        toText(writes, output));
}
