// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "policyrestriction.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QSignalSpy>
#include <QTest>

#include <sys/stat.h>
#include <utility>

namespace {

const QString Control = QStringLiteral("/run/govd-test/lock.so");

/// Installs the lock plugin of the tests, with keys that it can lock and one that it locks.
void installPlugin()
{
    const QString directory =
        QLibraryInfo::location(QLibraryInfo::LibrariesPath) + QLatin1String("/govd/");
    QVERIFY(QDir().mkpath(directory));
    QVERIFY(QFile::copy(QStringLiteral(GOVD_TEST_PLUGINS "/lockplugin.so"),
                        directory + QLatin1String("lock.so")));
    QVERIFY(QDir().mkpath(QFileInfo(Control).path()));
    QFile state(Control + QLatin1String(".state"));
    QVERIFY(state.open(QIODevice::WriteOnly));
    state.write(R"({"name": "lock", "supported": ["CameraEnabled", "MicrophoneEnabled"],
                    "locked": ["CameraEnabled"]})");
    QCOMPARE(mkfifo(qPrintable(Control + QLatin1String(".orders")), 0600), 0);
}

/// Has the plugin announce a lock, from this thread or from one of its own.
void announce(const QString &key, bool isLocked, bool isFromThread)
{
    QFile orders(Control + QLatin1String(".orders"));
    QVERIFY(orders.open(QIODevice::WriteOnly));
    const QJsonObject order{{QStringLiteral("key"), key},
                            {QStringLiteral("locked"), isLocked},
                            {QStringLiteral("thread"), isFromThread}};
    orders.write(QJsonDocument(order).toJson(QJsonDocument::Compact) + '\n');
}

} // namespace

/// The announcements of lock plugins, before the manager has checked whether they still apply.
class TestPolicyRestriction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { installPlugin(); }
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
    const PolicyRestriction restriction(nullptr);
    QSignalSpy relayed(&restriction, &PolicyRestriction::policyIsLockedChanged);

    announce(key, isLocked, false);
    announce(key, isLocked, true);

    QTRY_COMPARE(relayed.size(), 2);
    QCoreApplication::sendPostedEvents(); // further announcements would be in the queue by now
    QCOMPARE(relayed.size(), 2);
    for (const QVariantList &arguments : std::as_const(relayed))
        QCOMPARE(arguments, (QVariantList{key, isLocked}));
}

QTEST_GUILESS_MAIN(TestPolicyRestriction)
#include "tst_policyrestriction.moc"
