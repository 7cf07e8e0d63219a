// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "history.h"
#include "request.h"
#include "switches.h"
#include "text.h"

#include <algorithm>
#include <utility>

namespace {

QString resultText(const RecordedWrite &write, const Output &output)
{
    const auto style = write.isAccepted() ? Output::Style::Good : Output::Style::Bad;
    QString text = output.paint(style, printable(write.result));
    if (write.leftOut)
        text += QStringLiteral("; %1 before it have no record").arg(write.leftOut);
    return text;
}

/// @p leftOut writes after the last of @p writes have no record.
QString toText(const QVector<RecordedWrite> &writes, int leftOut, const Output &output)
{
    const QString end = leftOut
        ? QStringLiteral("%1 other writes since then have no record\n").arg(leftOut)
        : QString();
    if (writes.isEmpty())
        return QStringLiteral("the journal has no such record\n") + end;
    QVector<QStringList> rows;
    QVector<int> widths(5, 0);
    for (const RecordedWrite &write : writes) {
        rows.append({write.when(), write.user(), write.programText(), write.name(),
                     write.changeText(), resultText(write, output)});
        for (int i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], int(rows.last()[i].size()));
    }
    QString text;
    for (QStringList &row : rows) {
        for (int i = 0; i < widths.size(); ++i)
            row[i] = row[i].leftJustified(widths[i]);
        text += row.join(QStringLiteral("  ")) + QLatin1Char('\n');
    }
    return text + end;
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

bool isAskedFor(const RecordedWrite &write, const Request &request)
{
    if (request.has(QStringLiteral("denied")) && write.result != QLatin1String("denied"))
        return false;
    return request.arguments.isEmpty() || matchesAny(request.arguments, write.key);
}

} // namespace

ExitCode Verbs::history(const Request &request, Output &output)
{
    const Result<QVector<RecordedWrite>> all =
        History::read({}, request.options.value(QStringLiteral("since")), request.timeout);
    if (!all)
        return output.fail(all.failure());
    if (const Outcome failure = checkNames(unrecorded(request.arguments, *all), request.timeout))
        return output.fail(*failure);
    QVector<RecordedWrite> writes;
    QJsonArray array;
    int leftOut = 0;
    for (RecordedWrite write : *all) {
        leftOut += write.leftOut;
        if (!isAskedFor(write, request))
            continue;
        write.leftOut = std::exchange(leftOut, 0);
        writes.append(write);
        array.append(write.toJson());
    }
    return output.write(ExitCode::Done,
                        {{QStringLiteral("writes"), array}, {QStringLiteral("leftOut"), leftOut}},
                        toText(writes, leftOut, output));
}
