// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "text.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QVector>

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

constexpr int LongestCited = 60;

/// The number of characters to insert, delete, replace or swap with the next one to make @p b of
/// @p a.
int editDistance(const QString &a, const QString &b)
{
    QVector<int> before(b.size() + 1);
    QVector<int> previous(b.size() + 1);
    QVector<int> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 1; i <= a.size(); ++i) {
        before = std::exchange(previous, row);
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int replaced = previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, previous[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row.last();
}

/// The distance of a known name from @p name, or nothing when it is too large. A name that contains
/// @p name is nearer than one that is spelt like it.
std::optional<int> distanceOf(const QString &name, const QString &known)
{
    const QString a = name.toLower();
    const QString b = known.toLower();
    if (b.startsWith(a))
        return 0;
    if (a.size() > 2 && b.contains(a))
        return 1;
    // The beginning of the known name counts too: the name may be misspelt and incomplete.
    const int distance = std::min(editDistance(a, b), editDistance(a, b.left(a.size())));
    const int limit = std::max(1, int(a.size()) / 3);
    // A distance of the whole length means that the names have nothing in common.
    return distance <= limit && distance < a.size() ? std::optional<int>(distance + 1)
                                                    : std::nullopt;
}

/// @p text with another character for each slash: to the regular expressions of Qt's wildcards a
/// slash is special, but in the key of a switch it is a letter like others.
QString withoutSlashes(QString text)
{
    return text.replace(QLatin1Char('/'), QChar(0xFDD0));
}

} // namespace

QString programName()
{
    return QCoreApplication::arguments().constFirst();
}

QString printable(const QString &text)
{
    QString result;
    for (const QChar character : text) {
        const bool steers = character.category() == QChar::Other_Control
            || character.category() == QChar::Other_Format;
        if (steers)
            result += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}

QString quoted(const QString &text)
{
    return QLatin1Char('"') + printable(text) + QLatin1Char('"');
}

QString cited(const QString &name)
{
    if (name.size() <= LongestCited)
        return quoted(name);
    return quoted(name.left(LongestCited) + QStringLiteral("..."));
}

QString onOff(std::optional<bool> value)
{
    if (!value)
        return QStringLiteral("none");
    return *value ? QStringLiteral("on") : QStringLiteral("off");
}

std::optional<bool> parseValue(const QString &text)
{
    static const QStringList on{QStringLiteral("on"), QStringLiteral("true"), QStringLiteral("yes"),
                                QStringLiteral("1")};
    static const QStringList off{QStringLiteral("off"), QStringLiteral("false"),
                                 QStringLiteral("no"), QStringLiteral("0")};
    if (on.contains(text, Qt::CaseInsensitive))
        return true;
    if (off.contains(text, Qt::CaseInsensitive))
        return false;
    return std::nullopt;
}

bool matchesAny(const QStringList &patterns, const QString &name)
{
    return std::any_of(patterns.begin(), patterns.end(), [&name](const QString &pattern) {
        const QRegularExpression expression(
            QRegularExpression::wildcardToRegularExpression(withoutSlashes(pattern)));
        return pattern == name
            || (expression.isValid() && expression.match(withoutSlashes(name)).hasMatch());
    });
}

QStringList nearest(const QString &name, const QStringList &known)
{
    QVector<std::pair<int, QString>> found;
    for (const QString &candidate : known) {
        if (const std::optional<int> rank = distanceOf(name, candidate); rank && !name.isEmpty())
            found.append({*rank, candidate});
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    QStringList result;
    for (const auto &[rank, candidate] : found)
        result.append(candidate);
    return result;
}
