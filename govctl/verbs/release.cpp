// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "holds.h"
#include "knownpolicies.h"
#include "request.h"
#include "usage.h"
#include "writing.h"

#include <algorithm>

namespace {

/// The holds that the user named, or all when none is named; with the option "due" only those.
Result<QVector<Hold>> chosen(const Request &request, const Holds::Listing &all)
{
    QVector<Hold> result;
    QStringList known;
    for (const Hold &hold : all.holds) {
        known.append(hold.id);
        const bool isNamed = request.arguments.isEmpty() || request.arguments.contains(hold.id);
        if (isNamed && (hold.isDue() || !request.has(QStringLiteral("due"))))
            result.append(hold);
    }
    for (const QString &id : request.arguments) {
        if (!known.contains(id))
            return all.failure
                ? *all.failure
                : unknownName(QStringLiteral("unknown-hold"), QStringLiteral("hold"), known, id,
                              QStringLiteral("\"govctl holds\" names them"));
    }
    return result;
}

/// What became of the steps of all holds, and whether what was taken back is in force.
struct Report
{
    Holds::Release release;
    ForceCheck check;
};

QJsonObject toJson(const Report &report)
{
    return {{QStringLiteral("takenBack"), toJson(report.release.takenBack)},
            {QStringLiteral("left"), toJson(report.release.left)},
            {QStringLiteral("failed"), toJson(report.release.failed)},
            {QStringLiteral("notes"), QJsonArray::fromStringList(report.check.notes)}};
}

QString toText(const Report &report, const Output &output)
{
    const Holds::Release &release = report.release;
    QString text;
    for (const Step &step : release.takenBack)
        text += QStringLiteral("%1: %2 -> %3\n")
                    .arg(step.name(), output.paint(step.value), output.paint(step.before));
    for (const Step &step : release.left)
        text +=
            QStringLiteral("%1 is left alone: somebody has changed it since\n").arg(step.name());
    for (const Step &step : release.failed)
        text += QStringLiteral("%1 is not taken back, and stays in its hold\n").arg(step.name());
    for (const QString &note : report.check.notes)
        text += note + QLatin1Char('\n');
    return text;
}

/// What fails stays in its hold.
Outcome release(Daemon &daemon, const Hold &hold, Holds::Release &report)
{
    const Result<Snapshot> snapshot = takeSnapshot(daemon, KnownPolicies::keys());
    if (!snapshot)
        return snapshot.failure();
    const Holds::Release release = Holds::takeBack(daemon, *snapshot, hold);
    report.takenBack += release.takenBack;
    report.left += release.left;
    report.failed += release.failed;
    const QVector<Step> ended = release.takenBack + release.left;
    const Outcome failure = Holds::edit([&](Hold &other) {
        const auto hasEnded = [&](const Step &step) {
            return other.id == hold.id && contains(ended, step);
        };
        other.steps.erase(std::remove_if(other.steps.begin(), other.steps.end(), hasEnded),
                          other.steps.end());
    });
    return release.failure ? release.failure : failure;
}

Outcome release(const Request &request, Output &output, const QVector<Hold> &holds, Report &report)
{
    if (holds.isEmpty())
        return std::nullopt;
    Daemon daemon(request.timeout, waitingNote(output));
    if (const auto owner = daemon.open(); !owner)
        return owner.failure();
    Outcome result;
    for (const Hold &hold : holds) {
        if (const Outcome failure = release(daemon, hold, report.release))
            result = failure;
    }
    if (result || report.release.takenBack.isEmpty())
        return result;
    const Result<ForceCheck> check = checkForce(daemon, report.release.takenBack);
    if (!check)
        return check.failure();
    report.check = *check;
    return std::nullopt;
}

} // namespace

ExitCode Verbs::release(const Request &request, Output &output)
{
    if (const Outcome failure = Holds::checkRight())
        return output.fail(*failure);
    const Holds::Listing all = Holds::all();
    const Result<QVector<Hold>> holds = chosen(request, all);
    if (!holds)
        return output.fail(holds.failure());

    // Before the daemon is needed, so that what cannot be taken back now is tried again.
    Outcome failure = request.has(QStringLiteral("due")) ? Holds::renewTimer() : std::nullopt;
    Report report;
    if (const Outcome second = ::release(request, output, *holds, report))
        failure = second;
    if (!failure)
        failure = all.failure;
    if (failure)
        return output.fail(*failure, toJson(report), toText(report, output));
    return output.write(report.check.isContradicted ? ExitCode::NotInForce : ExitCode::Done,
                        toJson(report), toText(report, output));
}
