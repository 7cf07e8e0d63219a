// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "simulator/program/calllog.h"

#include "commandline/text.h"

#include <QJsonDocument>

namespace Simulator {
namespace {

constexpr int OriginWidth = 10;
constexpr int WhatWidth = 46;

/// Arguments as JSON has them, without its brackets.
QString argumentsText(const QVariantList &arguments)
{
    const QJsonDocument document(QJsonArray::fromVariantList(arguments));
    const QString text = QString::fromUtf8(document.toJson(QJsonDocument::Compact));
    return printable(text.mid(1, text.size() - 2));
}

QString whatText(const Happening &happening)
{
    if (happening.origin == QLatin1String("file"))
        return happening.path;
    return QStringLiteral("%1(%2)").arg(happening.what, argumentsText(happening.arguments));
}

QJsonObject toJson(const Happening &happening)
{
    QJsonArray changes;
    for (const Change &change : happening.changes)
        changes.append(QJsonObject{{QStringLiteral("what"), change.key},
                                   {QStringLiteral("from"), change.before},
                                   {QStringLiteral("to"), change.now}});
    return {{QStringLiteral("time"), happening.time.toUTC().toString(Qt::ISODateWithMs)},
            {QStringLiteral("origin"), happening.origin},
            {QStringLiteral("path"), happening.path},
            {QStringLiteral("method"),
             happening.what.isEmpty() ? QJsonValue() : QJsonValue(happening.what)},
            {QStringLiteral("arguments"), QJsonArray::fromVariantList(happening.arguments)},
            {QStringLiteral("error"),
             happening.errorName.isEmpty() ? QJsonValue() : QJsonValue(happening.errorName)},
            {QStringLiteral("changes"), changes}};
}

} // namespace

CallLog::CallLog(Output &output)
    : m_output(output)
{
}

void CallLog::print(const Happening &happening)
{
    m_output.write(ExitCode::Done, toJson(happening), toText(happening));
}

QString CallLog::toText(const Happening &happening) const
{
    const QString time = happening.time.toString(QStringLiteral("hh:mm:ss.zzz"));
    return QStringLiteral("%1  %2 %3  %4\n")
        .arg(m_output.paint(Output::Style::Faint, time),
             m_output.paint(Output::Style::Strong, happening.origin.leftJustified(OriginWidth)),
             whatText(happening).leftJustified(WhatWidth), outcomeOf(happening));
}

QString CallLog::outcomeOf(const Happening &happening) const
{
    QStringList parts;
    if (!happening.errorName.isEmpty())
        parts.append(
            m_output.paint(Output::Style::Bad, happening.errorName.section(QLatin1Char('.'), -1)));
    for (const Change &change : happening.changes)
        parts.append(m_output.paint(
            Output::Style::Good,
            QStringLiteral("%1: %2 -> %3").arg(change.key, change.before, change.now)));
    if (parts.isEmpty())
        parts.append(m_output.paint(Output::Style::Faint, QStringLiteral("-")));
    return parts.join(QStringLiteral(", "));
}

} // namespace Simulator
