// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_GOVCTL_JSONSCHEMA_H
#define GOVD_TESTS_GOVCTL_JSONSCHEMA_H

#include <QJsonObject>
#include <QString>
#include <QStringList>

/// A JSON schema, as far as the one of govctl uses the language.
///
/// Stricter than the language: a field that an object's schema does not list is an error, and so is
/// a keyword that this class does not know, so that nothing passes because nobody looked at it.
class JsonSchema
{
public:
    /// Reads the schema at @p path. Without one, everything is wrong.
    explicit JsonSchema(const QString &path);

    /// What is wrong with @p document, one line for each error; empty when it is valid.
    QStringList errors(const QJsonValue &document) const;

private:
    QStringList check(const QJsonValue &schema, const QJsonValue &value,
                      const QString &place) const;
    QStringList checkKeyword(const QJsonObject &schema, const QString &keyword,
                             const QJsonValue &value, const QString &place) const;
    QStringList checkProperties(const QJsonObject &schema, const QJsonObject &value,
                                const QString &place) const;
    QStringList checkOneOf(const QJsonArray &schemas, const QJsonValue &value,
                           const QString &place) const;

    QJsonObject m_root;
};

#endif
