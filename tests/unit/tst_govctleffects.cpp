// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "govctl/effects.h"
#include "tables.h"

#include <QtTest>

/// What the client says about enforcement, against the tables of the daemon that do it.
class TestGovctlEffects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyEnforcedPolicyHasWords();
    void otherPoliciesHaveNone();
    void applicationsAreNamed();
    void usbModesAreNamed();

private:
    static QSet<int> enforcedTypes();
};

QSet<int> TestGovctlEffects::enforcedTypes()
{
    QSet<int> result;
    for (auto row = policyHandlers.begin(); row != policyHandlers.end(); ++row)
        result.insert(row.key());
    for (const auto &service : serviceHandlers) {
        for (const PolicyType type : service.first)
            result.insert(type);
    }
    return result;
}

void TestGovctlEffects::everyEnforcedPolicyHasWords()
{
    QVERIFY(!enforcedTypes().isEmpty());
    for (const int type : enforcedTypes())
        QVERIFY2(!enforcementEffects(type, false).isEmpty(), qPrintable(QString::number(type)));
}

void TestGovctlEffects::otherPoliciesHaveNone()
{
    for (int type = 0; type < 100; ++type) {
        if (!enforcedTypes().contains(type))
            QCOMPARE(enforcementEffects(type, false) + enforcementEffects(type, true),
                     QStringList());
    }
}

void TestGovctlEffects::applicationsAreNamed()
{
    for (auto row = policyApplications.begin(); row != policyApplications.end(); ++row) {
        for (const QString &application : *row) {
            for (const bool value : {false, true})
                QVERIFY2(!enforcementEffects(row.key(), value).filter(application).isEmpty(),
                         qPrintable(application));
        }
    }
}

void TestGovctlEffects::usbModesAreNamed()
{
    for (auto row = usbModeNames.begin(); row != usbModeNames.end(); ++row) {
        const QString mode = QString::fromLatin1(*row);
        for (const bool value : {false, true})
            QVERIFY2(!enforcementEffects(row.key(), value).filter(mode).isEmpty(), *row);
    }
}

QTEST_GUILESS_MAIN(TestGovctlEffects)
#include "tst_govctleffects.moc"
