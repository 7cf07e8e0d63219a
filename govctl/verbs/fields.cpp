// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "fields.h"

#include "text.h"

#include <algorithm>

namespace {

QString switchKeys(const PolicyState &policy)
{
    QStringList keys;
    for (const Daemon::Switch &governor : policy.switches)
        keys.append(printable(governor.key));
    return keys.join(QLatin1Char(','));
}

struct Field
{
    QString name;
    QString (*text)(const PolicyState &policy);
};

const QVector<Field> &all()
{
    static const QVector<Field> fields{
        {QStringLiteral("key"),
         [](const PolicyState &policy) {
             return policy.key;
         }},
        {QStringLiteral("type"),
         [](const PolicyState &policy) {
             return QString::number(policy.type);
         }},
        {QStringLiteral("value"),
         [](const PolicyState &policy) {
             return onOff(policy.value);
         }},
        {QStringLiteral("stored"),
         [](const PolicyState &policy) {
             return onOff(policy.stored);
         }},
        {QStringLiteral("reason"),
         [](const PolicyState &policy) {
             return reasonName(policy.reason());
         }},
        {QStringLiteral("enforced"),
         [](const PolicyState &policy) {
             return policy.isEnforced() ? QStringLiteral("yes") : QStringLiteral("no");
         }},
        {QStringLiteral("switches"), switchKeys},
    };
    return fields;
}

} // namespace

QStringList Fields::names()
{
    QStringList result;
    for (const Field &field : all())
        result.append(field.name);
    return result;
}

QString Fields::line(const PolicyState &policy, const QStringList &names)
{
    QStringList texts;
    for (const QString &name : names) {
        const auto field = std::find_if(all().begin(), all().end(),
                                        [&name](const Field &one) { return one.name == name; });
        texts.append(field->text(policy));
    }
    return texts.join(QLatin1Char('\t')) + QLatin1Char('\n');
}
