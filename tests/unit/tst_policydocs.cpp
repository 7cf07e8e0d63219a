// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policytypes.h"
#include "tables.h"

#include <QtTest>

namespace {

/// The cells of the table of policies on the page, by number: policy, at once, services,
/// applications, USB mode.
QMap<int, QStringList> documentedRows()
{
    QFile page(QStringLiteral(GOVD_POLICY_PAGE));
    if (!page.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", GOVD_POLICY_PAGE);
    QMap<int, QStringList> rows;
    const QStringList lines = QString::fromUtf8(page.readAll()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        QStringList cells = line.split(QStringLiteral(" | "));
        bool isNumber = false;
        const int number = cells.value(0).mid(2).toInt(&isNumber);
        if (isNumber && cells.size() == 6) {
            cells.last().chop(2); // the closing bar
            rows.insert(number, cells.mid(1));
        }
    }
    return rows;
}

QString cell(const QStringList &names)
{
    return names.isEmpty() ? QStringLiteral("-")
                           : QStringLiteral("`%1`").arg(names.join(QStringLiteral("`, `")));
}

QStringList servicesOf(PolicyType type)
{
    QStringList result;
    for (auto row = serviceHandlers.begin(); row != serviceHandlers.end(); ++row) {
        if (row->first.contains(type))
            result.append(row.key());
    }
    result.sort();
    return result;
}

QStringList modesOf(PolicyType type)
{
    const char *mode = usbModeNames.value(type);
    return mode ? QStringList(QString::fromLatin1(mode)) : QStringList();
}

} // namespace

/// The page that tells what each policy touches, against the dispatch tables.
class TestPolicyDocs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPolicyHasItsRow();
    void rowTellsWhatTheTablesSay_data();
    void rowTellsWhatTheTablesSay();
};

void TestPolicyDocs::everyPolicyHasItsRow()
{
    QStringList expected;
    for (int number = 1; number < PolicyTypes::enumeration().keyCount(); ++number)
        expected.append(typeToKey(static_cast<PolicyType>(number)));
    QStringList documented;
    for (const QStringList &row : documentedRows())
        documented.append(row.first());
    QCOMPARE(documented, expected);
}

void TestPolicyDocs::rowTellsWhatTheTablesSay_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QStringList>("row");
    const QMap<int, QStringList> rows = documentedRows();
    for (auto row = rows.begin(); row != rows.end(); ++row)
        QTest::newRow(qPrintable(row->first())) << row.key() << *row;
}

void TestPolicyDocs::rowTellsWhatTheTablesSay()
{
    QFETCH(int, number);
    QFETCH(QStringList, row);
    const auto type = static_cast<PolicyType>(number);
    QCOMPARE(row.at(0), typeToKey(type));
    QCOMPARE(row.at(1) != QStringLiteral("-"), policyHandlers.contains(type));
    QCOMPARE(row.at(2), cell(servicesOf(type)));
    QCOMPARE(row.at(3), cell(policyApplications.value(type)));
    QCOMPARE(row.at(4), cell(modesOf(type)));
}

QTEST_APPLESS_MAIN(TestPolicyDocs)
#include "tst_policydocs.moc"
