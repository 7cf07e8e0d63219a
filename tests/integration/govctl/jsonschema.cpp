// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/jsonschema.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

const QString Properties = QStringLiteral("properties");
const QString Additional = QStringLiteral("additionalProperties");

QString typeOf(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("boolean");
    case QJsonValue::Double:
        return QStringLiteral("integer"); // the schema has no other numbers
    case QJsonValue::String:
        return QStringLiteral("string");
    case QJsonValue::Array:
        return QStringLiteral("array");
    case QJsonValue::Object:
        return QStringLiteral("object");
    case QJsonValue::Undefined:
        return QStringLiteral("nothing");
    }
    Q_UNREACHABLE();
}

QString text(const QJsonValue &value)
{
    return QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact));
}

bool allowsType(const QJsonValue &types, const QString &type)
{
    return types.isArray() ? types.toArray().contains(type) : types.toString() == type;
}

QStringList unless(bool right, const QString &error)
{
    return right ? QStringList() : QStringList{error};
}

} // namespace

JsonSchema::JsonSchema(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        m_root = QJsonDocument::fromJson(file.readAll()).object();
}

QStringList JsonSchema::errors(const QJsonValue &document) const
{
    if (m_root.isEmpty())
        return {QStringLiteral("there is no schema")};
    return check(m_root, document, QStringLiteral("document"));
}

QStringList JsonSchema::check(const QJsonValue &schema, const QJsonValue &value,
                              const QString &place) const
{
    if (schema.isBool())
        return unless(schema.toBool(), place + QStringLiteral(": must not be there"));
    const QJsonObject keywords = schema.toObject();
    QStringList result;
    for (const QString &keyword : keywords.keys())
        result += checkKeyword(keywords, keyword, value, place);
    return result;
}

QStringList JsonSchema::checkKeyword(const QJsonObject &schema, const QString &keyword,
                                     const QJsonValue &value, const QString &place) const
{
    static const QStringList silent{QStringLiteral("$schema"),     QStringLiteral("title"),
                                    QStringLiteral("description"), QStringLiteral("definitions"),
                                    QStringLiteral("required"),    Additional};
    const QJsonValue rule = schema.value(keyword);
    const QString wrong = place + QStringLiteral(": ") + keyword + QStringLiteral(" forbids ");
    if (keyword == QLatin1String("$ref")) {
        const QString name = rule.toString().section(QLatin1Char('/'), -1);
        const QJsonValue target =
            m_root.value(QStringLiteral("definitions")).toObject().value(name);
        return target.isUndefined() ? QStringList{place + QStringLiteral(": dangling ") + name}
                                    : check(target, value, place);
    }
    if (keyword == QLatin1String("type"))
        return unless(allowsType(rule, typeOf(value)), wrong + text(value));
    if (keyword == QLatin1String("const"))
        return unless(rule == value, wrong + text(value));
    if (keyword == QLatin1String("enum"))
        return unless(rule.toArray().contains(value), wrong + text(value));
    if (keyword == QLatin1String("minimum"))
        return unless(value.toDouble() >= rule.toDouble(), wrong + text(value));
    if (keyword == QLatin1String("maximum"))
        return unless(value.toDouble() <= rule.toDouble(), wrong + text(value));
    if (keyword == QLatin1String("oneOf"))
        return checkOneOf(rule.toArray(), value, place);
    if (keyword == Properties)
        return checkProperties(schema, value.toObject(), place);
    if (keyword == QLatin1String("items")) {
        QStringList result;
        for (const QJsonValue item : value.toArray())
            result += check(rule, item, place + QStringLiteral("[]"));
        return result;
    }
    return unless(silent.contains(keyword), place + QStringLiteral(": unknown word ") + keyword);
}

QStringList JsonSchema::checkProperties(const QJsonObject &schema, const QJsonObject &value,
                                        const QString &place) const
{
    const QJsonObject properties = schema.value(Properties).toObject();
    // A schema without a type only says more about some fields of an object.
    const bool isWhole = schema.contains(QStringLiteral("type"));
    QStringList result;
    for (const QJsonValue name : schema.value(QStringLiteral("required")).toArray())
        result += unless(value.contains(name.toString()),
                         place + QStringLiteral(": misses ") + name.toString());
    for (const QString &name : value.keys()) {
        const QString field = place + QLatin1Char('.') + name;
        if (properties.contains(name))
            result += check(properties.value(name), value.value(name), field);
        else
            result += unless(!isWhole, field + QStringLiteral(": is not documented"));
    }
    return result;
}

QStringList JsonSchema::checkOneOf(const QJsonArray &schemas, const QJsonValue &value,
                                   const QString &place) const
{
    int matches = 0;
    QStringList closest;
    for (const QJsonValue schema : schemas) {
        const QStringList found = check(schema, value, place);
        matches += found.isEmpty() ? 1 : 0;
        if (closest.isEmpty() || found.size() < closest.size())
            closest = found;
    }
    if (matches == 1)
        return {};
    return closest + QStringList{place + QStringLiteral(": %1 forms match").arg(matches)};
}
