// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/lockplugin.h"
#include "support/neighbour.h"
#include "support/watcheddaemon.h"

#include <QTest>

using namespace Support;

namespace {

QStringList cameraQuestions(const LockPlugin &plugin)
{
    return plugin.calls().filter(QStringLiteral("policyIsLocked CameraEnabled"));
}

} // namespace

class TestLocks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }

    void lockedPolicyReadsFalse();
    void freePolicyReadsItsStoredValue();
    void unstoredKeyReadsFalseWhileLocked();
    void lockedPolicyIsRefusedSilently_data();
    void lockedPolicyIsRefusedSilently();
    void lockIsAskedAfreshEachTime();
    void lockNeedsNoAnnouncement();
    void secondSourceIsAskedOnlyWhenTheFirstIsFree();
    void keyThatIsNotListedIsNotLocked();
    void keyThatIsListedTwiceIsLockedLikeOnce();
    void keyThatNoPolicyHasDoesNoHarm();
    void policyThatIsFreeAgainTakesChanges();
};

void TestLocks::lockedPolicyReadsFalse()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setLocked({Camera});

    const Reply reply = Caller().policy(Camera);

    QCOMPARE(reply.errorName, QString());
    QCOMPARE(reply.signature, QStringLiteral("v"));
    QCOMPARE(reply.value(), QVariant(false));
    QCOMPARE(Caller().policy(Microphone).value(), QVariant(true));
}

void TestLocks::freePolicyReadsItsStoredValue()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setLocked({Camera});
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));

    plugin.setLocked({});

    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
}

void TestLocks::unstoredKeyReadsFalseWhileLocked()
{
    const QString unknown = QStringLiteral("NoSuchPolicy");
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {unknown});
    plugin.setLocked({unknown});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().policy(unknown).value(), QVariant(false));
}

void TestLocks::lockedPolicyIsRefusedSilently_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("forbid") << false;
    QTest::newRow("allow") << true;
}

void TestLocks::lockedPolicyIsRefusedSilently()
{
    QFETCH(bool, value);
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    QVERIFY(daemon.change(Camera, !value));
    plugin.setLocked({Camera});
    daemon.forget();
    const FileSnapshot file = Files::snapshot(PolicyFile);
    const FileSnapshot marker = Files::snapshot(CameraMarker);

    const Reply reply = Caller().setPolicy(Camera, value);

    QVERIFY(reply.arrived);
    QCOMPARE(reply.errorName, QString());
    QCOMPARE(reply.signature, QStringLiteral("b"));
    QCOMPARE(reply.value(), QVariant(false));
    QVERIFY(Files::snapshot(PolicyFile) == file);
    QVERIFY(Files::snapshot(CameraMarker) == marker);
    QCOMPARE(daemon.announcements(), QStringList());
    QCOMPARE(daemon.calls(), QStringList());
    QCOMPARE(daemon.monitor().calls(QStringLiteral("sendEventStringAlt")).size(), 0);
    QCOMPARE(daemon.logged(), QStringList());
    QCOMPARE(daemon.recorded(), QStringList());

    plugin.setLocked({});
    QCOMPARE(Caller().policy(Camera).value(), QVariant(!value));
}

void TestLocks::lockIsAskedAfreshEachTime()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int mark = plugin.mark();

    for (int i = 0; i < 3; ++i)
        QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QCOMPARE(Caller().policy(Microphone).value(), QVariant(true));

    const QString question = QStringLiteral("policyIsLocked CameraEnabled");
    QCOMPARE(plugin.calls(mark), QStringList({question, question, question}));
}

void TestLocks::lockNeedsNoAnnouncement()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    for (const bool isLocked : {true, false, true}) {
        plugin.setLocked(isLocked ? QStringList(Camera) : QStringList());
        QCOMPARE(Caller().policy(Camera).value(), QVariant(!isLocked));
        QCOMPARE(Caller().setPolicy(Camera, true).value(), QVariant(!isLocked));
    }
    QCOMPARE(daemon.announcements(), QStringList());
}

/// Which of the two is the first differs from run to run, so both ways round are tried.
void TestLocks::secondSourceIsAskedOnlyWhenTheFirstIsFree()
{
    LockPlugin one(QStringLiteral("one.so"), QStringLiteral("one"), {Camera});
    LockPlugin two(QStringLiteral("two.so"), QStringLiteral("two"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    int asked = 0;
    for (LockPlugin *locking : {&one, &two}) {
        one.setLocked({});
        two.setLocked({});
        locking->setLocked({Camera});
        const int before = cameraQuestions(one).size() + cameraQuestions(two).size();
        QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
        asked += cameraQuestions(one).size() + cameraQuestions(two).size() - before;
    }
    QCOMPARE(asked, 3); // one question when the first locks, two when only the second does

    one.setLocked({});
    two.setLocked({});
    const int before = cameraQuestions(one).size() + cameraQuestions(two).size();
    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QCOMPARE(cameraQuestions(one).size() + cameraQuestions(two).size() - before, 2);
}

void TestLocks::keyThatIsNotListedIsNotLocked()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Microphone});
    plugin.setLocked({Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QVERIFY(daemon.change(Camera, false));
    QCOMPARE(cameraQuestions(plugin), QStringList());
}

void TestLocks::keyThatIsListedTwiceIsLockedLikeOnce()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera, Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    const int mark = plugin.mark();
    const QString question = QStringLiteral("policyIsLocked CameraEnabled");

    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QCOMPARE(plugin.calls(mark), QStringList({question, question}));

    plugin.setLocked({Camera});
    QCOMPARE(Caller().policy(Camera).value(), QVariant(false));
    QCOMPARE(plugin.calls(mark), QStringList({question, question, question}));
}

void TestLocks::keyThatNoPolicyHasDoesNoHarm()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"),
                      {QStringLiteral("NoSuchPolicy"), QString(), QStringLiteral("cameraenabled")});
    plugin.setLocked({QStringLiteral("NoSuchPolicy"), QStringLiteral("cameraenabled")});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());

    QCOMPARE(Caller().policy(Camera).value(), QVariant(true));
    QCOMPARE(plugin.calls().filter(QStringLiteral("policyIsLocked")), QStringList());
}

void TestLocks::policyThatIsFreeAgainTakesChanges()
{
    LockPlugin plugin(QStringLiteral("lock.so"), QStringLiteral("lock"), {Camera});
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    plugin.setLocked({Camera});
    QCOMPARE(Caller().setPolicy(Camera, false).value(), QVariant(false));
    plugin.setLocked({});
    daemon.forget();

    QVERIFY(daemon.change(Camera, false));

    QCOMPARE(daemon.announcements(), QStringList(daemon.announcement(Camera, false)));
    QVERIFY(!Files::snapshot(CameraMarker).exists);
}

QTEST_GUILESS_MAIN(TestLocks)
#include "tst_locks.moc"
