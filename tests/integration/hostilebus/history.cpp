// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/history.h"

#include <QRegularExpression>

namespace {

const QString Accepted = QStringLiteral("returns b");

bool isBoolean(const QString &value)
{
    return value == QLatin1String("true") || value == QLatin1String("false");
}

} // namespace

QString valueFromEvent(const QString &text)
{
    bool isFraction = false;
    const double fraction = text.toDouble(&isFraction);
    if (isBoolean(text) || !isFraction || fraction >= 1)
        return text;
    return QStringLiteral("~%1").arg(qRound64(fraction * 1e8));
}

QString booleanReading(const QString &value)
{
    return value == QLatin1String("false") || value.startsWith(QLatin1Char('~'))
        ? QStringLiteral("false")
        : QStringLiteral("true");
}

History::History(const QStringList &texts, const QMap<QString, QString> &before)
    : m_before(before)
    , m_now(before)
{
    static const QRegularExpression format(
        QStringLiteral("^Policy (\\w+) changed\\. Old value (.*)\\. New value (.*)\\.$"));
    for (const QString &text : texts) {
        const QRegularExpressionMatch match = format.match(text);
        const Change change{text, match.captured(1), valueFromEvent(match.captured(2)),
                            valueFromEvent(match.captured(3))};
        if (!match.hasMatch() || change.oldValue != m_now.value(change.key))
            m_problem +=
                QStringLiteral("\"%1\" after the value %2\n").arg(text, m_now.value(change.key));
        m_now.insert(change.key, change.newValue);
        m_changes.append(change);
        m_changesOfKey[change.key].append(m_changes.size());
    }
}

int History::count(const QString &key, const QString &value) const
{
    const QVector<int> places = m_changesOfKey.value(key);
    return int(std::count_if(places.begin(), places.end(),
                             [&](int place) { return m_changes.at(place - 1).newValue == value; }));
}

QStringList History::announcements() const
{
    QStringList result;
    for (const Change &change : m_changes) {
        result.append(QLatin1String("event ") + change.text);
        if (change.oldValue != change.newValue)
            result.append(
                QStringLiteral("signal %1 %2").arg(change.key, booleanReading(change.newValue)));
    }
    return result;
}

int History::placeOfChange(const QString &key, const QString &value) const
{
    const QVector<int> places = m_changesOfKey.value(key);
    const auto found = std::find_if(places.begin(), places.end(), [&](int place) {
        return m_changes.at(place - 1).newValue == value;
    });
    return found == places.end() ? -1 : *found;
}

int History::placeOfValue(const QString &key, const QString &value, int since) const
{
    const QVector<int> places = m_changesOfKey.value(key);
    const auto next = std::upper_bound(places.begin(), places.end(), since);
    const QString first =
        next == places.begin() ? m_before.value(key) : m_changes.at(*(next - 1) - 1).newValue;
    if (first == value)
        return since;
    const auto found = std::find_if(
        next, places.end(), [&](int place) { return m_changes.at(place - 1).newValue == value; });
    return found == places.end() ? -1 : *found;
}

QString History::contradiction(const QStringList &account) const
{
    int place = 0;
    for (const QString &line : account) {
        const QStringList words = line.split(QLatin1Char(' '));
        const QString key = words.value(1);
        const QString value = words.value(2);
        int found = place;
        if (words.first() == QLatin1String("r"))
            found = placeOfValue(key, value, place);
        else if (words.mid(3).join(QLatin1Char(' ')) == Accepted)
            found = isBoolean(value) ? placeOfValue(key, value, place) : placeOfChange(key, value);
        if (found < place)
            return QStringLiteral("\"%1\" after change %2 of %3, at %4")
                .arg(line)
                .arg(place)
                .arg(size())
                .arg(found);
        place = found;
    }
    return QString();
}
