// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "carriers.h"
#include "effects.h"
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

/// The lines of the manual page below a heading, up to the next one of that rank or above.
QStringList section(const QString &heading)
{
    QFile page(QStringLiteral(GOVD_POLICY_PAGE));
    if (!page.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", GOVD_POLICY_PAGE);
    const int rank = heading.indexOf(QLatin1Char(' '));
    const QStringList lines = QString::fromUtf8(page.readAll()).split(QLatin1Char('\n'));
    QStringList below;
    for (int line = lines.indexOf(heading) + 1; line > 0 && line < lines.size(); ++line) {
        const int other = lines.at(line).indexOf(QRegularExpression(QStringLiteral("[^#]")));
        if (other > 0 && other <= rank)
            break;
        below.append(lines.at(line));
    }
    return below;
}

/// The cells of the table below a heading, without the two rows that begin it.
QVector<QStringList> rowsBelow(const QString &heading)
{
    QVector<QStringList> rows;
    const QStringList lines = section(heading).filter(QRegularExpression(QStringLiteral("^\\| ")));
    for (const QString &line : lines.mid(1))
        rows.append(line.mid(2).chopped(2).split(QStringLiteral(" | ")));
    return rows;
}

QStringList documentedServices()
{
    QStringList services = section(QStringLiteral("# SERVICE ROUTE"))
                               .filter(QRegularExpression(QStringLiteral("^## ")));
    services.replaceInStrings(QStringLiteral("## "), QString());
    services.sort();
    return services;
}

QStringList routesOf(PolicyType policy)
{
    QStringList routes;
    if (policyHandlers.contains(policy))
        routes.append(QStringLiteral("direct"));
    if (!servicesOf(policy).isEmpty())
        routes.append(QStringLiteral("service"));
    return routes;
}

QString cell(const QStringList &names)
{
    return names.isEmpty() ? QStringLiteral("-")
                           : QStringLiteral("`%1`").arg(names.join(QStringLiteral("`, `")));
}

} // namespace

/// The manual page of the policies and "govctl explain" against the dispatch tables.
class tst_Tables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPolicyIsOnThePage();
    void pageTellsTheDirectRoute();
    void pageTellsTheServiceRoute_data();
    void pageTellsTheServiceRoute();
    void explainTellsWhatTheTablesSay_data();
    void explainTellsWhatTheTablesSay();
    void everyCarrierIsLookedAt();
    void sharedUsbModesAreKnown();
};

void tst_Tables::everyPolicyIsOnThePage()
{
    QVector<QStringList> expected;
    for (int number = 1; number < PolicyTypes::enumeration().keyCount(); ++number) {
        const QString routes = routesOf(type(number)).join(QStringLiteral(", "));
        expected.append({QString::number(number), typeToKey(type(number)),
                         routes.isEmpty() ? QStringLiteral("-") : routes});
    }
    QCOMPARE(rowsBelow(QStringLiteral("# POLICIES")), expected);
}

void tst_Tables::pageTellsTheDirectRoute()
{
    QStringList expected;
    for (int number = 1; number < PolicyTypes::enumeration().keyCount(); ++number) {
        if (policyHandlers.contains(type(number)))
            expected.append(typeToKey(type(number)));
    }
    QStringList documented =
        section(QStringLiteral("# DIRECT ROUTE")).filter(QRegularExpression(QStringLiteral("^- ")));
    documented.replaceInStrings(QRegularExpression(QStringLiteral("^- `(\\w+)`:.*")),
                                QStringLiteral("\\1"));
    QCOMPARE(documented, expected);
}

void tst_Tables::pageTellsTheServiceRoute_data()
{
    QTest::addColumn<QString>("service");
    QStringList services = serviceHandlers.keys();
    services.sort();
    QCOMPARE(documentedServices(), services);
    for (const QString &service : services)
        QTest::newRow(qPrintable(service)) << service;
}

void tst_Tables::pageTellsTheServiceRoute()
{
    QFETCH(QString, service);
    const QVector<PolicyType> policies = serviceHandlers.value(service).first;
    const PolicyHandler handler = serviceHandlers.value(service).second;
    QMap<QString, QString> expected;
    for (const PolicyType policy : policies)
        expected.insert(typeToKey(policy),
                        cell(policyApplications.value(policy) + modesOf(policy)));

    const QVector<QStringList> rows = rowsBelow(QStringLiteral("## %1").arg(service));
    QMap<QString, QString> documented;
    for (const QStringList &row : rows)
        documented.insert(row.first(), row.value(1));
    QCOMPARE(documented.keys(), expected.keys());
    if (handler == updateDenylist || handler == updateUsbModes)
        QCOMPARE(documented, expected);
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
        QVERIFY2(looked.contains(number) == !actionsOf(type(number)).empty(),
                 qPrintable(typeToKey(type(number))));
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
