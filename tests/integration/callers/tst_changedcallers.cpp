// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/caller.h"
#include "support/effectiveuser.h"
#include "support/facts.h"
#include "support/files.h"
#include "support/texts.h"
#include "support/watcheddaemon.h"

#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QtTest>

using namespace Support;

namespace {

/// Ids that the user and group databases do not know.
Identity withoutName()
{
    Identity identity;
    identity.user = 54321;
    identity.group = 54321;
    return identity;
}

QDBusMessage cameraOff()
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.kvt.PolicyManager"), QStringLiteral("/org/kvt/PolicyManager"),
        QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("SetKeyValue"));
    message.setArguments({Camera, QVariant::fromValue(QDBusVariant(false))});
    return message;
}

/// Sends without blocking the event loop, on a connection that has its identity already.
QDBusMessage call(const QDBusConnection &connection, const QDBusMessage &message)
{
    const QDBusPendingCall pending = connection.asyncCall(message, Deadline);
    if (!waitFor([&] { return pending.isFinished(); }, 2 * Deadline))
        qFatal("No end of a call");
    return pending.reply();
}

} // namespace

/// Callers that are somebody else now than when they connected to the bus.
class TestChangedCallers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void processCountsAsItIsNow_data();
    void processCountsAsItIsNow();
};

void TestChangedCallers::init()
{
    Files::reset();
}

void TestChangedCallers::processCountsAsItIsNow_data()
{
    QTest::addColumn<Identity>("then");
    QTest::addColumn<Identity>("now");
    QTest::addColumn<QStringList>("queries");
    QTest::addColumn<bool>("isAllowed");

    const QStringList process(ProcessQuery);
    const Identity root = Identity::root();
    const Identity guest = Identity::of("guest");
    const Identity mdm = Identity::of("mdm");
    // Each is checked twice when the first check lets it pass.
    QTest::newRow("guest has become root") << guest << root << process + process << true;
    QTest::newRow("guest has become privileged")
        << guest << guest.inGroup("privileged") << process + process << true;
    QTest::newRow("root has become guest") << root << guest << BothQueries << false;
    QTest::newRow("privileged has become guest")
        << guest.inGroup("privileged") << guest << BothQueries << false;
    QTest::newRow("root has become ids without a name")
        << root << withoutName() << BothQueries << false;
    // The user is the one that the bus knows.
    QTest::newRow("member has become guest") << mdm << guest << BothQueries + BothQueries << true;
    QTest::newRow("guest has become member") << guest << mdm << BothQueries << false;
}

void TestChangedCallers::processCountsAsItIsNow()
{
    QFETCH(Identity, then);
    QFETCH(Identity, now);
    QFETCH(QStringList, queries);
    QFETCH(bool, isAllowed);
    WatchedDaemon daemon;
    QVERIFY(daemon.start());
    Bus bus;
    const QDBusConnection connection = [&] {
        const EffectiveUser user(then);
        return bus.connect();
    }();
    QVERIFY(connection.isConnected());
    daemon.forget();

    const QDBusMessage reply = [&] {
        const EffectiveUser user(now);
        return call(connection, cameraOff());
    }();

    QCOMPARE(daemon.recorded().size(), isAllowed ? 1 : 0);
    QCOMPARE(reply.type() == QDBusMessage::ReplyMessage, isAllowed);
    if (!isAllowed)
        QCOMPARE(reply.errorMessage(), denialText(QCoreApplication::applicationPid()));
    QCOMPARE(daemon.messages(connection.baseService()).filter(QStringLiteral("GetConnection")),
             queries);
    QCOMPARE(Caller().policy(Camera).value(), QVariant(!isAllowed));
}

QTEST_GUILESS_MAIN(TestChangedCallers)
#include "tst_changedcallers.moc"
