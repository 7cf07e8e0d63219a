// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "caller.h"
#include "planning.h"
#include "request.h"
#include "timelimit.h"
#include "writing.h"

namespace {

/// A plan, the result of making its steps, and notes for people.
struct Work
{
    Plan plan;
    Application application;
    QStringList notes;
    bool isContradicted = false; ///< a policy is not in force
};

QJsonObject toJson(const Work &work, bool isDry)
{
    return {{QStringLiteral("changed"), !isDry && !work.application.done.isEmpty()},
            {QStringLiteral("dryRun"), isDry},
            {QStringLiteral("kept"), work.plan.kept.size()},
            {QStringLiteral("changes"), toJson(work.application.done)},
            {QStringLiteral("takenBack"), toJson(work.application.takenBack)},
            {QStringLiteral("obstacles"), obstaclesToJson(work.plan)},
            {QStringLiteral("notes"), QJsonArray::fromStringList(work.notes)}};
}

QString toText(const Work &work, const Output &output)
{
    QString text = stepsText(work.application.done, output);
    for (const Step &step : work.application.takenBack)
        text += QStringLiteral("%1: taken back, it is %2 again\n")
                    .arg(step.name(), output.paint(step.before));
    if (work.plan.steps.isEmpty())
        text += QStringLiteral("the device is as the file says; nothing to do\n");
    for (const QString &note : work.notes)
        text += note + QLatin1Char('\n');
    return text;
}

ExitCode report(const Request &request, Output &output, const Work &work)
{
    const bool isDry = request.has(QStringLiteral("dry-run"));
    const QJsonObject result = toJson(work, isDry);
    QString text = toText(work, output);
    if (isDry)
        text.prepend(QStringLiteral("dry run: nothing is changed\n"));
    if (work.application.failure)
        return output.fail(*work.application.failure, result, text);
    if (work.isContradicted)
        return output.write(ExitCode::NotInForce, result, text);
    const bool tells = request.has(QStringLiteral("exit-code"));
    return output.write(tells && !work.application.done.isEmpty() ? ExitCode::No : ExitCode::Done,
                        result, text);
}

/// Makes the steps of @p plan under @p limit.
Work carryOutPlan(Daemon &daemon, const Plan &plan, TimeLimit limit)
{
    Work work{plan, carryOut(daemon, plan.steps), {}, false};
    const Application &made = work.application;
    limit.settle(made.failure ? made.done : plan.steps + plan.kept, made.failure);
    work.notes = limit.notes();
    if (made.failure && !made.done.isEmpty())
        work.notes += QStringLiteral("what is listed here could not be taken back; a change "
                                     "without an answer may be made later");
    return work;
}

/// The failure of the whole plan: its first obstacle and the number of the others.
Failure firstObstacle(const Plan &plan)
{
    Failure failure = plan.obstacles.constFirst();
    failure.message += QStringLiteral("; nothing was changed");
    if (plan.obstacles.size() > 1)
        failure.message += QStringLiteral(" (and %1 more; \"govctl diff\" names them)")
                               .arg(plan.obstacles.size() - 1);
    return failure;
}

} // namespace

ExitCode Verbs::apply(const Request &request, Output &output)
{
    const bool isDry = request.has(QStringLiteral("dry-run"));
    Daemon daemon(request.timeout, waitingNote(output));
    const Result<Plan> plan = planFromFile(daemon, request.arguments.constFirst());
    if (!plan)
        return output.fail(plan.failure());
    if (!plan->obstacles.isEmpty())
        return output.fail(firstObstacle(*plan), toJson(Work{*plan, {}, {}, false}, isDry), {});
    if (const auto failure = plan->steps.isEmpty() ? std::nullopt : checkRight(daemon))
        return output.fail(*failure, toJson(Work{*plan, {}, {}, false}, isDry), {});
    if (const auto failure = TimeLimit::checkRight(request))
        return output.fail(*failure, toJson(Work{*plan, {}, {}, false}, isDry), {});

    if (isDry)
        return report(request, output, Work{*plan, {plan->steps, {}, {}}, plan->notes, false});
    const Result<TimeLimit> limit = TimeLimit::begin(request, plan->steps + plan->kept);
    if (!limit)
        return output.fail(limit.failure(), toJson(Work{*plan, {}, {}, false}, isDry), {});
    Work work = carryOutPlan(daemon, *plan, *limit);
    if (work.application.failure)
        return report(request, output, work);
    const Result<ForceCheck> check = checkForce(daemon, work.application.done);
    if (!check)
        return output.fail(check.failure(), toJson(work, isDry), toText(work, output));
    work.notes += plan->notes + check->notes;
    work.isContradicted = check->isContradicted;
    return report(request, output, work);
}
