// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "inspection.h"
#include "names.h"
#include "request.h"
#include "text.h"

#include <QJsonArray>

#include <algorithm>

namespace {

QVector<PolicyState> differences(const Inspection &inspection)
{
    QVector<PolicyState> result;
    if (!inspection.snapshot)
        return result;
    for (const PolicyState &policy : inspection.snapshot->policies) {
        if (policy.differs())
            result.append(policy);
    }
    return result;
}

QString row(const QString &name, const QString &text)
{
    return QStringLiteral("%1 %2\n").arg(name.leftJustified(9), text);
}

QString ownerText(const Inspection &inspection)
{
    if (!inspection.owner) {
        const bool isAbsent = inspection.failure->name == QLatin1String("no-service");
        return row(QStringLiteral("service"),
                   isAbsent ? QStringLiteral("not there") : QStringLiteral("not known"));
    }
    const QString user = inspection.owner->user == 0 ? QStringLiteral("root")
                                                     : QString::number(inspection.owner->user);
    return row(QStringLiteral("service"),
               QStringLiteral("%1 is there, as %2")
                   .arg(Names::Service, inspection.owner->connection))
        + row(QStringLiteral("owner"), QStringLiteral("user %1").arg(user));
}

/// Why the policies are not compared with @p file.
QString notComparedText(const StoredValues &file)
{
    const QString form = QStringLiteral("not compared with %1, which %2");
    switch (file.state) {
    case StoredValues::State::Read:
        break;
    case StoredValues::State::Missing:
        return form.arg(file.path, QStringLiteral("is missing"));
    case StoredValues::State::Unreadable:
        return form.arg(file.path, QStringLiteral("this user may not read"));
    case StoredValues::State::Malformed:
        return form.arg(file.path, QStringLiteral("is malformed: nothing can be saved"));
    }
    Q_UNREACHABLE();
}

QString differencesText(const Snapshot &snapshot, const QVector<PolicyState> &different,
                        const Output &output)
{
    if (snapshot.file.state != StoredValues::State::Read)
        return row(QStringLiteral("policies"), notComparedText(snapshot.file));
    QString text = row(QStringLiteral("policies"),
                       QStringLiteral("%1 of %2 read differently from %3")
                           .arg(QString::number(different.size()),
                                QString::number(snapshot.policies.size()), snapshot.file.path));
    for (const PolicyState &policy : different) {
        text += QStringLiteral("  %1: %2, stored %3: %4\n")
                    .arg(policy.key, output.paint(policy.value), output.paint(policy.stored),
                         policy.shortReason());
    }
    return text;
}

QString pluginsText(const PluginConditions &plugins)
{
    if (!plugins)
        return row(QStringLiteral("plugins"),
                   QStringLiteral("not known: this user may not read %1")
                       .arg(Names::PluginConditionDirectory));
    QString text;
    for (const PluginCondition &plugin : *plugins)
        text += row(QStringLiteral("plugin"),
                    printable(QStringLiteral("%1: %2").arg(plugin.name, plugin.message)));
    return text;
}

QString toText(const Inspection &inspection, const QVector<PolicyState> &different,
               const Output &output)
{
    QString text = ownerText(inspection);
    if (inspection.snapshot)
        text += row(QStringLiteral("answers"), QStringLiteral("yes"))
            + differencesText(*inspection.snapshot, different, output)
            + pluginsText(inspection.plugins);
    return text;
}

QJsonObject toJson(const Inspection &inspection, const QVector<PolicyState> &different)
{
    QJsonArray policies;
    for (const PolicyState &policy : different)
        policies.append(policy.toJson());
    const QJsonValue file = inspection.snapshot ? QJsonValue(inspection.snapshot->file.stateName())
                                                : QJsonValue(QJsonValue::Null);
    return {{QStringLiteral("owner"), inspection.ownerToJson()},
            {QStringLiteral("answers"), inspection.snapshot.has_value()},
            {QStringLiteral("file"), file},
            {QStringLiteral("plugins"), toJson(inspection.plugins)},
            {QStringLiteral("differences"), policies}};
}

/// A difference from the stored value that comes from a switch or a lock is intended.
bool isFault(const PolicyState &policy)
{
    return policy.reason() != Reason::Switch && policy.reason() != Reason::Lock;
}

bool isGood(const Inspection &inspection, const QVector<PolicyState> &different)
{
    const QVector<PluginCondition> plugins =
        inspection.plugins.value_or(QVector<PluginCondition>());
    return std::none_of(different.begin(), different.end(), isFault)
        && inspection.snapshot->file.state != StoredValues::State::Malformed
        && std::all_of(plugins.begin(), plugins.end(),
                       [](const PluginCondition &plugin) { return plugin.isGood(); });
}

} // namespace

ExitCode Verbs::status(const Request &request, Output &output)
{
    const Inspection inspection = inspectDaemon(request.timeout);
    const QVector<PolicyState> different = differences(inspection);
    const QJsonObject result = toJson(inspection, different);
    const QString text = toText(inspection, different, output);
    if (inspection.failure)
        return output.fail(*inspection.failure, result, text);
    return output.write(isGood(inspection, different) ? ExitCode::Done : ExitCode::No, result,
                        text);
}
