// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/carriers.h"
#include "govctl/effects.h"
#include "handlers.h"
#include "tables.h"

#include <QtTest>

#include <set>

namespace {

PolicyType type(int number)
{
    return static_cast<PolicyType>(number);
}

QStringList servicesOf(PolicyType policy)
{
    QStringList result;
    for (auto row = serviceHandlers.begin(); row != serviceHandlers.end(); ++row) {
        if (row->first.contains(policy))
            result.append(row.key());
    }
    result.sort();
    return result;
}

QStringList modesOf(PolicyType policy)
{
    const char *mode = usbModeNames.value(policy);
    return mode ? QStringList(QString::fromLatin1(mode)) : QStringList();
}

/// What the handlers do for a policy. A call of the sandbox with no application counts as nothing.
std::set<PolicyHandler> actionsOf(PolicyType policy)
{
    std::set<PolicyHandler> result;
    if (policyHandlers.contains(policy))
        result.insert(policyHandlers.value(policy));
    for (const QString &service : servicesOf(policy))
        result.insert(serviceHandlers.value(service).second);
    if (!policyApplications.contains(policy))
        result.erase(updateDenylist);
    return result;
}

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

} // namespace

/// The page of policies and "govctl explain" against the dispatch tables.
class tst_Tables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPolicyIsOnThePage();
    void pageTellsWhatTheTablesSay_data();
    void pageTellsWhatTheTablesSay();
    void explainTellsWhatTheTablesSay_data();
    void explainTellsWhatTheTablesSay();
    void everyCarrierIsLookedAt();
    void sharedUsbModesAreKnown();
};

void tst_Tables::everyPolicyIsOnThePage()
{
    QStringList expected;
    for (int number = 1; number < PolicyTypes::enumeration().keyCount(); ++number)
        expected.append(typeToKey(type(number)));
    QStringList documented;
    for (const QStringList &row : documentedRows())
        documented.append(row.first());
    QCOMPARE(documented, expected);
}

void tst_Tables::pageTellsWhatTheTablesSay_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QStringList>("row");
    const QMap<int, QStringList> rows = documentedRows();
    for (auto row = rows.begin(); row != rows.end(); ++row)
        QTest::newRow(qPrintable(row->first())) << row.key() << *row;
}

void tst_Tables::pageTellsWhatTheTablesSay()
{
    QFETCH(int, number);
    QFETCH(QStringList, row);
    QCOMPARE(row.at(0), typeToKey(type(number)));
    QCOMPARE(row.at(1) != QStringLiteral("-"), policyHandlers.contains(type(number)));
    QCOMPARE(row.at(2), cell(servicesOf(type(number))));
    QCOMPARE(row.at(3), cell(policyApplications.value(type(number))));
    QCOMPARE(row.at(4), cell(modesOf(type(number))));
}

void tst_Tables::explainTellsWhatTheTablesSay_data()
{
    QTest::addColumn<int>("number");
    for (int number = 0; number <= PolicyTypes::enumeration().keyCount(); ++number)
        QTest::addRow("%d %s", number, qPrintable(typeToKey(type(number)))) << number;
}

void tst_Tables::explainTellsWhatTheTablesSay()
{
    QFETCH(int, number);
    const int actions = static_cast<int>(actionsOf(type(number)).size());
    QCOMPARE(enforcementEffects(number, false).size(), actions);
    QVERIFY(enforcementEffects(number, true).size() <= actions);

    const QStringList names = policyApplications.value(type(number)) + modesOf(type(number));
    for (const bool value : {false, true}) {
        for (const QString &name : names)
            QVERIFY2(!enforcementEffects(number, value).filter(name).isEmpty(), qPrintable(name));
    }
}

/// "govctl verify" checks each service that handlers call, and something for each policy with a
/// handler.
void tst_Tables::everyCarrierIsLookedAt()
{
    QMap<int, QStringList> looked;
    for (const Carrier &carrier : carriers())
        looked[carrier.type].append(carrier.name);
    for (int number = 0; number <= PolicyTypes::enumeration().keyCount(); ++number) {
        QCOMPARE(looked.contains(number), !actionsOf(type(number)).empty());
        const QStringList services = servicesOf(type(number));
        for (const QString &service : services) {
            const bool isToldNothing = serviceHandlers.value(service).second == updateDenylist
                && !policyApplications.contains(type(number));
            QVERIFY2(isToldNothing || looked.value(number).contains(service), qPrintable(service));
        }
    }
}

void tst_Tables::sharedUsbModesAreKnown()
{
    for (int number = 0; number <= PolicyTypes::enumeration().keyCount(); ++number) {
        QVector<int> sharing;
        for (int other = 0; other <= PolicyTypes::enumeration().keyCount(); ++other) {
            if (other != number && !modesOf(type(number)).isEmpty()
                && modesOf(type(other)) == modesOf(type(number)))
                sharing.append(other);
        }
        QCOMPARE(sharingUsbMode(number), sharing);
    }
}

QTEST_APPLESS_MAIN(tst_Tables)
#include "tst_tables.moc"
