// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"

#include <QtTest>

using namespace Support;

namespace {

const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
const QString Camera = QStringLiteral("CameraEnabled"); // what a sensible call is about

/// The rows of the table, each a member with its answers, one for each column.
QMap<QString, QStringList> readTable()
{
    QMap<QString, QStringList> rows;
    const QString text = QString::fromUtf8(Files::read(QStringLiteral(GOVD_CALLER_TABLE)));
    for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QStringList words = line.simplified().split(QLatin1Char(' '));
        if (!words.first().startsWith(QLatin1Char('#')))
            rows.insert(words.takeFirst(), words);
    }
    return rows;
}

QString answerIn(const QString &outcome)
{
    const QString returns = QStringLiteral("returns ");
    if (!outcome.startsWith(returns))
        return outcome;
    const QString types = outcome.mid(returns.size());
    return types.isEmpty() ? QStringLiteral("-") : types;
}

} // namespace

/// Every member of every interface on the object, those of the standard included, called by every
/// kind of user. The members come from the object itself: a new one fails until it has a row.
class TestCallerMatrix : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everybodyGetsWhatTheTableSays_data();
    void everybodyGetsWhatTheTableSays();
};

void TestCallerMatrix::everybodyGetsWhatTheTableSays_data()
{
    QTest::addColumn<int>("column");
    for (size_t i = 0; i < crowdUsers().size(); ++i)
        QTest::newRow(crowdUsers().at(i).name) << int(i);
}

void TestCallerMatrix::everybodyGetsWhatTheTableSays()
{
    QFETCH(int, column);
    const CrowdUser user = crowdUsers().at(size_t(column));
    const QMap<QString, QStringList> table = readTable();
    QStringList expected;
    for (auto row = table.begin(); row != table.end(); ++row)
        expected.append(row.key() + QLatin1Char(' ') + row->value(column));
    Files::reset();
    Daemon daemon;
    QVERIFY(daemon.start());
    const FileSnapshot before = Files::snapshot(PolicyFile);

    QStringList answers;
    for (const QString &line : runClient(user.identity(), {QStringLiteral("sensibly")}))
        answers.append(line.section(QLatin1Char('\t'), 0, 0) + QLatin1Char(' ')
                       + answerIn(line.section(QLatin1Char('\t'), 1)));
    answers.sort();

    QCOMPARE(answers, expected);
    QCOMPARE(Client().policy(Camera), QVariant(!user.mayWrite));
    QCOMPARE(Files::snapshot(PolicyFile) == before, !user.mayWrite);
}

QTEST_GUILESS_MAIN(TestCallerMatrix)
#include "tst_callermatrix.moc"
