// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/systemlog.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace Support;

namespace {

const QString Key = QStringLiteral("NfcEnabled"); // nothing but its value changes
constexpr quint32 Seed = 20260102;
constexpr int AtOnce = 4;
constexpr int Never = 60000000; // microseconds

/// One caller that killed itself: what it had been told by then.
struct Death
{
    CrowdUser user;
    int number;
    QStringList told;

    bool wasAccepted() const
    {
        return !told.isEmpty() && told.first().startsWith(QLatin1String("returns b"));
    }
};

QStringList order(int number, int delay)
{
    return {QStringLiteral("vanish"), Key, QString::number(number), QString::number(delay)};
}

/// How many microseconds a write takes in this run when nothing disturbs it.
int timeOfWrite()
{
    int shortest = Never;
    for (int i = 0; i < 10; ++i) {
        CrowdClient client(Identity::root(), order(0, Never));
        if (!client.waitForLine(QStringLiteral(" in ")))
            qFatal("A write is not answered");
        shortest = qMin(shortest, client.lines().first().section(QLatin1Char(' '), -1).toInt());
    }
    return shortest;
}

/// Lets callers of every kind vanish, some at once, each at a random moment of its call.
QVector<Death> vanish(int deaths, int longest, QRandomGenerator &random)
{
    QVector<Death> result;
    while (result.size() < deaths) {
        std::vector<std::unique_ptr<CrowdClient>> callers;
        for (int i = 0; i < AtOnce; ++i) {
            const int number = 1000 + result.size();
            const CrowdUser user = crowdUsers().at(size_t(number) % crowdUsers().size());
            callers.push_back(std::make_unique<CrowdClient>(
                user.identity(), order(number, random.bounded(1, longest))));
            result.append({user, number, {}});
        }
        for (int i = 0; i < AtOnce; ++i) {
            if (!callers[size_t(i)]->waitForEnd())
                qFatal("A caller has failed");
            result[result.size() - AtOnce + i].told = callers[size_t(i)]->lines();
        }
    }
    return result;
}

bool isRecorded(const QString &events, int number)
{
    return events.contains(QStringLiteral("New value %1.").arg(number));
}

} // namespace

/// Callers that are killed before the daemon judges them, while it does, and after.
class TestVanishingCallers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noneIsAdmittedWronglyAndNoneIsLost();
};

void TestVanishingCallers::noneIsAdmittedWronglyAndNoneIsLost()
{
    Files::reset();
    SystemLog log;
    Daemon daemon;
    QVERIFY(daemon.start());
    QRandomGenerator random(Seed);
    const int longest = 2 * AtOnce * timeOfWrite();

    const QVector<Death> deaths = vanish(amount(500, 5000), longest, random);
    QVERIFY(daemon.isRunning());
    Client client;
    QVERIFY(client.setPolicy(QStringLiteral("LastOfAll"), true)); // the daemon has done all before
    log.settle();
    QString events;
    for (const SystemLogLine &line : log.lines())
        events += line.text + QLatin1Char('\n');

    int before = 0, within = 0, after = 0, refused = 0;
    for (const Death &death : deaths) {
        const bool recorded = isRecorded(events, death.number);
        QVERIFY2(death.user.mayWrite || !(recorded || death.wasAccepted()), death.user.name);
        QVERIFY2(recorded || !death.wasAccepted(), "an acknowledged write is lost");
        refused += !death.user.mayWrite;
        before += death.user.mayWrite && !recorded;
        within += recorded && !death.wasAccepted();
        after += death.wasAccepted();
    }
    qInfo("seed %u: %d callers killed within %d us; with rights: %d unheard, %d carried out but not"
          " told, %d told; %d without rights, all refused",
          Seed, int(deaths.size()), longest, before, within, after, refused);
    QVERIFY(before > 0 && within > 0 && after > 0);
    QCOMPARE(Files::values(QStringLiteral("/etc/policy/policy.conf")).value(Key),
             QStringLiteral("true"));
}

QTEST_GUILESS_MAIN(TestVanishingCallers)
#include "tst_vanishingcallers.moc"
