// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "hostilebus/crowd.h"
#include "hostilebus/history.h"
#include "support/client.h"
#include "support/daemon.h"
#include "support/files.h"
#include "support/platformkeys.h"
#include "support/systemlog.h"

#include <QtTest>

using namespace Support;

namespace {

const QString PolicyFile = QStringLiteral("/etc/policy/policy.conf");
const QString LastKey = QStringLiteral("LastOfAll");
constexpr unsigned Seed = 20260101;

QStringList texts(const QVector<SystemLogLine> &lines)
{
    QStringList result;
    for (const SystemLogLine &line : lines)
        result.append(line.text);
    return result;
}

/// How often the clients were told that @p value was taken for @p key, for all that they wrote.
QHash<QPair<QString, QString>, int> acknowledged(const std::vector<Account> &accounts)
{
    QHash<QPair<QString, QString>, int> result;
    for (const Account &account : accounts) {
        for (const QString &line : account.lines) {
            const QStringList words = line.split(QLatin1Char(' '));
            if (words.first() == QLatin1String("w") && words.value(3) == QLatin1String("returns"))
                ++result[{words.at(1), words.at(2)}];
        }
    }
    return result;
}

} // namespace

/// Many clients at once, with and without rights: all that anybody can see fits to one order of
/// the writes that were accepted, and to nothing else.
class TestLoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void clientsWithoutRightsGetNothingAccepted();
    void everyAcknowledgedWriteHappenedOnce();
    void eventsFormOneHistory();
    void listenersHearTheSameHistory();
    void everyClientsAccountHasItsPlaceInTheHistory();
    void finalValuesAreThoseOfTheHistory();

private:
    std::vector<Account> m_accounts;
    QStringList m_heard;
    QStringList m_events;
    QMap<QString, QString> m_before;
    std::unique_ptr<History> m_history;
    std::unique_ptr<Daemon> m_daemon;
    QStringList m_keys = platformKeys().mid(1);
};

void TestLoad::initTestCase()
{
    const int clients = amount(14, 50);
    const int calls = amount(600, 2000);
    Files::reset();
    SystemLog log;
    m_daemon = std::make_unique<Daemon>();
    QVERIFY(m_daemon->start());
    Client client;
    for (const QString &key : qAsConst(m_keys))
        m_before.insert(key, client.policy(key).toString());
    CrowdClient listener(Identity::root(), {QStringLiteral("listen")});
    QVERIFY(listener.waitForLine(QStringLiteral("ready")));

    m_accounts = runWorkers(clients, calls, 0, Seed, m_keys);
    QVERIFY(client.setPolicy(LastKey, true));
    QVERIFY(listener.waitForLine(QLatin1String("signal ") + LastKey));
    log.settle();
    m_heard = listener.lines().mid(1);
    m_events = texts(log.lines());
    m_history = std::make_unique<History>(m_events, m_before);
    qInfo("seed %u: %d clients with %d calls each, %d changes", Seed, clients, calls,
          m_history->size());
}

void TestLoad::clientsWithoutRightsGetNothingAccepted()
{
    int refused = 0;
    for (const Account &account : m_accounts) {
        for (const QString &line : account.lines) {
            if (!line.startsWith(QLatin1String("w ")))
                continue;
            const QString wanted = account.user.mayWrite ? QStringLiteral(" returns b")
                                                         : QStringLiteral(" AccessDenied");
            QVERIFY2(line.endsWith(wanted), qPrintable(line));
            refused += !account.user.mayWrite;
        }
    }
    QVERIFY(refused > 100);
    qInfo("%d writes refused", refused);
}

void TestLoad::everyAcknowledgedWriteHappenedOnce()
{
    const auto writes = acknowledged(m_accounts);
    int sum = 1; // the last of all
    for (auto it = writes.begin(); it != writes.end(); ++it) {
        QCOMPARE(m_history->count(it.key().first, it.key().second), it.value());
        sum += it.value();
    }
    QCOMPARE(m_history->size(), sum);
}

void TestLoad::eventsFormOneHistory()
{
    QCOMPARE(m_history->problem(), QString());
}

void TestLoad::listenersHearTheSameHistory()
{
    QCOMPARE(m_heard, m_history->announcements());
}

void TestLoad::everyClientsAccountHasItsPlaceInTheHistory()
{
    for (const Account &account : m_accounts)
        QCOMPARE(m_history->contradiction(account.lines), QString());
}

void TestLoad::finalValuesAreThoseOfTheHistory()
{
    const QMap<QString, QString> values = m_history->values();
    QMap<QString, QString> booleans;
    Client client;
    for (auto it = values.begin(); it != values.end(); ++it) {
        booleans.insert(it.key(), booleanReading(it.value()));
        QCOMPARE(valueFromEvent(client.policy(it.key()).toString()), it.value());
    }
    QMap<QString, QString> file = Files::values(PolicyFile);
    file.remove(platformKeys().first());
    QCOMPARE(file, booleans);
    QVERIFY(m_daemon->isRunning());
}

QTEST_GUILESS_MAIN(TestLoad)
#include "tst_load.moc"
