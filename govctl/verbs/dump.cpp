// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "caller.h"
#include "inspection.h"
#include "names.h"
#include "request.h"
#include "switches.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>

namespace {

QJsonObject toJson(const StoredValues &file)
{
    QJsonObject values;
    for (auto value = file.values.begin(); value != file.values.end(); ++value)
        values.insert(value.key(), value.value());
    return {{QStringLiteral("path"), file.path},
            {QStringLiteral("state"), file.stateName()},
            {QStringLiteral("values"), values}};
}

QJsonObject program()
{
    return {{QStringLiteral("version"), QCoreApplication::applicationVersion()},
            {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
            {QStringLiteral("system"), QSysInfo::prettyProductName()},
            {QStringLiteral("kernel"), QSysInfo::kernelVersion()}};
}

QJsonObject toJson(const Inspection &inspection)
{
    QJsonArray policies;
    QJsonArray switches;
    if (inspection.snapshot) {
        for (const PolicyState &policy : inspection.snapshot->policies)
            policies.append(policy.toJson());
        for (const Daemon::Switch &governor : inspection.snapshot->switches)
            switches.append(toJson(governor));
    }
    return {{QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
            {QStringLiteral("program"), program()},
            {QStringLiteral("caller"), describeCaller().toJson()},
            {QStringLiteral("owner"), inspection.ownerToJson()},
            {QStringLiteral("files"),
             QJsonArray{toJson(readStoredValues(Names::PolicyFile)),
                        toJson(readStoredValues(Names::SwitchFile))}},
            {QStringLiteral("plugins"), toJson(inspection.plugins)},
            {QStringLiteral("policies"), policies},
            {QStringLiteral("switches"), switches}};
}

} // namespace

ExitCode Verbs::dump(const Request &request, Output &output)
{
    output.alwaysJson();
    const Inspection inspection = inspectDaemon(request.timeout);
    if (inspection.failure)
        return output.fail(*inspection.failure, toJson(inspection), {});
    return output.write(ExitCode::Done, toJson(inspection), {});
}
