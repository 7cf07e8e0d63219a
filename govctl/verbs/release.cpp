// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/holds.h"
#include "govctl/knownpolicies.h"
#include "govctl/request.h"
#include "govctl/usage.h"
#include "govctl/writing.h"

namespace {

/// The holds @p ids, or all holds when there are none.
Result<QVector<Hold>> chosen(const QStringList &ids)
{
    const QVector<Hold> all = Holds::all();
    if (ids.isEmpty())
        return all;
    QVector<Hold> result;
    QStringList known;
    for (const Hold &hold : all) {
        known.append(hold.id);
        if (ids.contains(hold.id))
            result.append(hold);
    }
    for (const QString &id : ids) {
        if (!known.contains(id))
            return unknownName(QStringLiteral("unknown-hold"), QStringLiteral("hold"), id, known,
                               QStringLiteral("\"govctl holds\" names them"));
    }
    return result;
}

/// What was taken back, and the failure of what was not.
struct Report
{
    QVector<Step> takenBack;
    QVector<Step> left;
    Outcome failure;

    QJsonObject toJson() const
    {
        return {{QStringLiteral("takenBack"), ::toJson(takenBack)},
                {QStringLiteral("left"), ::toJson(left)}};
    }

    QString toText(const Output &output) const
    {
        QString text;
        for (const Step &step : takenBack)
            text += QStringLiteral("%1: %2 -> %3\n")
                        .arg(step.name(), output.paint(step.value), output.paint(step.before));
        for (const Step &step : left)
            text += QStringLiteral("%1 is left alone: somebody has changed it since\n")
                        .arg(step.name());
        return text;
    }
};

/// A hold that could not be taken back completely stays, and its timer tries again.
Outcome release(Daemon &daemon, const Hold &hold, Report &report)
{
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return snapshot.failure();
    const Application application = Holds::takeBack(daemon, *snapshot, hold);
    report.takenBack += application.takenBack;
    report.left += application.done;
    if (!application.failure)
        Holds::forget(hold);
    return application.failure;
}

} // namespace

ExitCode Verbs::release(const Request &request, Output &output)
{
    const bool onlyDue = request.has(QStringLiteral("due"));
    const Result<QVector<Hold>> holds = chosen(request.arguments);
    if (!holds)
        return output.fail(holds.failure());
    Daemon daemon(request.timeout, waitingNote(output));
    if (const auto owner = daemon.open(); !owner)
        return output.fail(owner.failure());
    Report report;
    for (const Hold &hold : *holds) {
        const Outcome failure =
            onlyDue && !hold.isDue() ? Holds::setTimer(hold) : release(daemon, hold, report);
        report.failure = failure ? failure : report.failure;
    }
    if (report.failure)
        return output.fail(*report.failure, report.toJson(), report.toText(output));
    return output.write(ExitCode::Done, report.toJson(), report.toText(output));
}
