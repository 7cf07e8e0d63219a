// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "support/bus.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/platformkeys.h"
#include "support/waiting.h"

#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QRandomGenerator>
#include <QtTest>

using namespace Support;

namespace {

const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");

using Values = QMap<QString, QString>;

/// A series of writes, sent at once, of which the daemon carries out as many as it can.
struct Burst
{
    QVector<Values> states; ///< what the file holds after none, one, two ... of the writes
    QVector<QDBusPendingCall> replies;

    int acknowledged() const
    {
        return int(std::count_if(replies.begin(), replies.end(), [](const QDBusPendingCall &each) {
            return each.isFinished() && !each.isError();
        }));
    }
};

Burst sendBurst(QDBusConnection bus, int size, QRandomGenerator &random)
{
    Burst burst{{Files::values(PolicyFile)}, {}};
    const QStringList keys = platformKeys();
    for (int i = 0; i < size; ++i) {
        const QString key = keys.at(random.bounded(1, keys.size()));
        Values state = burst.states.last();
        const bool value = state.value(key) != QLatin1String("true");
        state.insert(key, value ? QStringLiteral("true") : QStringLiteral("false"));
        QDBusMessage write = QDBusMessage::createMethodCall(
            QStringLiteral("org.kvt.PolicyManager"), QStringLiteral("/org/kvt/PolicyManager"),
            QStringLiteral("org.kvt.PolicyManager.Policy"), QStringLiteral("SetKeyValue"));
        write.setArguments({key, QVariant::fromValue(QDBusVariant(value))});
        burst.states.append(state);
        burst.replies.append(bus.asyncCall(write, Deadline));
    }
    return burst;
}

} // namespace

/// The daemon killed at random in the middle of writes: it loses nothing that it has acknowledged,
/// and leaves no state that it never was in.
class TestRandomKills : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Files::reset(); }
    void nothingAcknowledgedIsLost();
};

void TestRandomKills::nothingAcknowledgedIsLost()
{
    constexpr int burstSize = 80;
    const int rounds = qEnvironmentVariableIsSet("GOVD_HOLD") ? 500 : 25;
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    Daemon daemon;
    QVERIFY(daemon.start());
    int inTheMiddle = 0;
    for (int round = 0; round < rounds; ++round) {
        Bus bus; // closes its connections; the system bus takes so many and no more
        const Burst burst = sendBurst(bus.connect(), burstSize, random);
        const int end = random.bounded(burstSize);
        QVERIFY(waitFor([&] { return burst.acknowledged() >= end; }));
        daemon.kill();
        const auto allEnded = [&] {
            return std::all_of(burst.replies.begin(), burst.replies.end(),
                               [](const QDBusPendingCall &each) { return each.isFinished(); });
        };
        QVERIFY(waitFor(allEnded)); // the bus answers for the one that has gone
        const int acknowledged = burst.acknowledged();

        const Values found = Files::values(PolicyFile);
        const int state = burst.states.indexOf(found, acknowledged);
        QVERIFY2(state >= 0, Files::read(PolicyFile).constData());
        inTheMiddle += acknowledged < burstSize;

        QVERIFY(daemon.start());
        Client client;
        for (auto it = found.begin(); it != found.end(); ++it)
            QCOMPARE(client.policy(it.key()), QVariant(it.value() == QLatin1String("true")));
    }
    qInfo("%d writes, %d kills, %d of them in the middle", rounds * burstSize, rounds, inTheMiddle);
    QVERIFY(inTheMiddle > rounds / 2);
}

QTEST_GUILESS_MAIN(TestRandomKills)
#include "tst_randomkills.moc"
