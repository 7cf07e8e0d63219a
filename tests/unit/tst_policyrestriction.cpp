// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policyrestriction.h"
#include "support/lockplugin.h"

#include <QSignalSpy>
#include <QTest>

using namespace Support;

/// What the lock plugins tell, before anybody has judged whether it still holds.
class TestPolicyRestriction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcementIsPassedOnAsItCame_data();
    void announcementIsPassedOnAsItCame();
};

void TestPolicyRestriction::announcementIsPassedOnAsItCame_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isLocked");
    const QString locked = QStringLiteral("CameraEnabled");
    const QString free = QStringLiteral("MicrophoneEnabled");
    const QString unlisted = QStringLiteral("WlanEnabled");
    QTest::newRow("a locked key as locked") << locked << true;
    QTest::newRow("a locked key as free") << locked << false;
    QTest::newRow("a free key as locked") << free << true;
    QTest::newRow("a free key as free") << free << false;
    QTest::newRow("a key that is not listed as locked") << unlisted << true;
    QTest::newRow("a key that is not listed as free") << unlisted << false;
    QTest::newRow("no policy at all") << QStringLiteral("nonsense") << true;
    QTest::newRow("an empty key as locked") << QString() << true;
    QTest::newRow("an empty key as free") << QString() << false;
}

void TestPolicyRestriction::announcementIsPassedOnAsItCame()
{
    QFETCH(QString, key);
    QFETCH(bool, isLocked);
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"),
                      {QStringLiteral("CameraEnabled"), QStringLiteral("MicrophoneEnabled")});
    plugin.setLocked({QStringLiteral("CameraEnabled")});
    const PolicyRestriction restriction(nullptr);
    QSignalSpy relayed(&restriction, &PolicyRestriction::policyIsLockedChanged);

    plugin.announce(key, isLocked);
    plugin.announceFromThread(key, isLocked);

    QTRY_COMPARE(relayed.size(), 2);
    QCoreApplication::sendPostedEvents(); // more would stand in the queue by now
    QCOMPARE(relayed.size(), 2);
    for (const QVariantList &arguments : qAsConst(relayed))
        QCOMPARE(arguments, (QVariantList{key, isLocked}));
}

QTEST_GUILESS_MAIN(TestPolicyRestriction)
#include "tst_policyrestriction.moc"
