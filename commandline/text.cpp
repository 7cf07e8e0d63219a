// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "commandline/text.h"

#include <QVector>

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

constexpr int MostSuggestions = 3;

/// The number of letters to insert, delete, replace or swap with their neighbour until @p a is
/// @p b.
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

/// How unlike @p name a known name is, or nothing when it is too unlike to be meant. Whoever types
/// part of a name means that name rather than one that is spelt like the part.
std::optional<int> unlikeness(const QString &name, const QString &known)
{
    const QString a = name.toLower();
    const QString b = known.toLower();
    if (b.startsWith(a))
        return 0;
    if (a.size() > 2 && b.contains(a))
        return 1;
    // People misspell beginnings, too: compare with as much of the name as was typed.
    const int distance = std::min(editDistance(a, b), editDistance(a, b.left(a.size())));
    const int bearable = std::max(1, a.size() / 3);
    // Whoever has to replace every letter meant another name.
    return distance <= bearable && distance < a.size() ? std::optional<int>(distance + 1)
                                                       : std::nullopt;
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

QStringList nearest(const QString &name, const QStringList &known)
{
    QVector<std::pair<int, QString>> found;
    for (const QString &candidate : known) {
        if (const std::optional<int> rank = unlikeness(name, candidate); rank && !name.isEmpty())
            found.append({*rank, candidate});
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    const auto best = found.mid(0, MostSuggestions);
    QStringList result;
    for (const auto &[rank, candidate] : best)
        result.append(candidate);
    return result;
}
